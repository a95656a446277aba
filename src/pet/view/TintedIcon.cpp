#include "pet/view/TintedIcon.h"

#include "agents/ProviderRegistry.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

// Outside any namespace, as the macro asks for.
static void initialiseResources()
{
    Q_INIT_RESOURCE(BubbleIcons);
}

namespace nibbo {

TintedIcon::TintedIcon(const QString& file)
{
    initialiseResources();
    if (QFile::exists(file))
        m_file = file;
}

TintedIcon TintedIcon::ofActivity(const QString& name)
{
    return TintedIcon(QStringLiteral(":/icons/activity/%1.svg").arg(name));
}

TintedIcon TintedIcon::ofProvider(const AgentProvider& provider)
{
    const ProviderSpec* spec = provider.spec();
    return spec ? TintedIcon(QStringLiteral(":/icons/providers/%1.svg").arg(spec->id)) : TintedIcon();
}

void TintedIcon::draw(QPainter& painter, const QRectF& square, const QColor& colour) const
{
    if (isEmpty())
        return;
    const double ratio = painter.device()->devicePixelRatioF();
    const int side = static_cast<int>(std::ceil(square.width() * ratio));
    const QString key = QStringLiteral("%1 %2 %3").arg(m_file).arg(side).arg(colour.rgba());
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter pen(&pixmap);
        QSvgRenderer renderer(m_file);
        renderer.render(&pen, QRectF(0, 0, side, side));
        pen.setCompositionMode(QPainter::CompositionMode_SourceIn);
        pen.fillRect(pixmap.rect(), colour);
        pen.end();
        QPixmapCache::insert(key, pixmap);
    }
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(square, pixmap, QRectF(pixmap.rect()));
    painter.restore();
}

} // namespace nibbo
