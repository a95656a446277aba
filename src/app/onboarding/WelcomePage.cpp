#include "app/onboarding/WelcomePage.h"

#include "app/ShareFolder.h"
#include "settings/view/Theme.h"

#include <QBasicTimer>
#include <QEasingCurve>
#include <QElapsedTimer>
#include <QPainter>
#include <QRadialGradient>
#include <QSvgRenderer>
#include <QSysInfo>
#include <QTimerEvent>
#include <QVBoxLayout>

#include <cmath>
#include <numbers>
#include <utility>

namespace nibbo {
namespace {

constexpr int mascotWidth = 228;
constexpr int mascotHeight = 190;
constexpr int mascotRoom = 26;
constexpr int frameMs = 33;
constexpr double arrivalMs = 520;
constexpr double breathMs = 3600;
constexpr double breathPixels = 3.0;

/// What people call the system that runs us.
QString systemName()
{
    QString name = QSysInfo::kernelType();
    if (name == QLatin1String("darwin"))
        return QStringLiteral("macOS");
    name[0] = name[0].toUpper();
    return name;
}

/// The mascot in a soft light. It comes in with a little bounce and then floats gently, as long as it is
/// seen.
class Mascot final : public QWidget
{
public:
    explicit Mascot(const SettingsServices& services)
        : m_services(services)
        , m_renderer(shareFolder() + QStringLiteral("/icons/NibboMascot.svg"))
    {
        setFixedSize(mascotWidth + 2 * mascotRoom + 60, mascotHeight + 2 * mascotRoom);
        setFocusPolicy(Qt::NoFocus);
        setAccessibleName(QStringLiteral("Nibbo"));
    }

protected:
    void showEvent(QShowEvent* event) override
    {
        QWidget::showEvent(event);
        m_shown.start();
        if (!reducesMotion(m_services, *this))
            m_timer.start(frameMs, this);
    }

    void hideEvent(QHideEvent* event) override
    {
        QWidget::hideEvent(event);
        m_timer.stop();
    }

    void timerEvent(QTimerEvent* event) override
    {
        if (event->timerId() == m_timer.timerId())
            update();
        else
            QWidget::timerEvent(event);
    }

    void changeEvent(QEvent* event) override
    {
        QWidget::changeEvent(event);
        if (event->type() == QEvent::PaletteChange)
            m_light = QPixmap();
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        const double since = m_timer.isActive() ? static_cast<double>(m_shown.elapsed()) : -1;
        const QPointF middle = QRectF(rect()).center();
        drawLight(painter);
        drawMascot(painter, middle, since);
    }

private:
    /// Drawn once for a palette and a screen.
    void drawLight(QPainter& painter)
    {
        const double ratio = devicePixelRatioF();
        if (m_light.isNull() || m_light.devicePixelRatioF() != ratio) {
            m_light = QPixmap(size() * ratio);
            m_light.setDevicePixelRatio(ratio);
            m_light.fill(Qt::transparent);
            QColor colour = palette().color(QPalette::Active, QPalette::Highlight);
            const float strength = theme::isDark(palette()) ? 0.32F : 0.20F;
            const double reach = height() / 2.0;
            QRadialGradient light(QPointF(0, 0), reach);
            for (const auto& [at, share] :
                 {std::pair(0.0, 1.0F), std::pair(0.55, 0.5F), std::pair(1.0, 0.0F)}) {
                colour.setAlphaF(strength * share);
                light.setColorAt(at, colour);
            }
            QPainter brush(&m_light);
            brush.setRenderHint(QPainter::Antialiasing);
            brush.translate(QRectF(rect()).center());
            brush.scale(width() / 2.0 / reach, 1);
            brush.setPen(Qt::NoPen);
            brush.setBrush(light);
            brush.drawEllipse(QPointF(0, 0), reach, reach);
        }
        painter.drawPixmap(0, 0, m_light);
    }

    void drawMascot(QPainter& painter, QPointF middle, double since)
    {
        const double ratio = devicePixelRatioF();
        if (m_picture.isNull() || m_picture.devicePixelRatioF() != ratio) {
            m_picture = QPixmap(QSize(mascotWidth, mascotHeight) * ratio);
            m_picture.fill(Qt::transparent);
            QPainter pen(&m_picture);
            m_renderer.render(&pen, m_picture.rect());
            pen.end();
            m_picture.setDevicePixelRatio(ratio);
        }
        double scale = 1;
        double lift = 0;
        if (since >= 0) {
            QEasingCurve arrival(QEasingCurve::OutBack);
            arrival.setOvershoot(1.2);
            scale = 0.9 + 0.1 * arrival.valueForProgress(qMin(1.0, since / arrivalMs));
            if (since > arrivalMs)
                lift =
                    breathPixels * (1 - std::cos((since - arrivalMs) / breathMs * 2 * std::numbers::pi)) / 2;
        }
        painter.translate(middle.x(), middle.y() + mascotHeight / 2.0 - lift);
        painter.scale(scale, scale);
        painter.drawPixmap(QPointF(-mascotWidth / 2.0, -mascotHeight), m_picture);
    }

    const SettingsServices& m_services;
    QSvgRenderer m_renderer;
    QPixmap m_picture;
    QPixmap m_light;
    QElapsedTimer m_shown;
    QBasicTimer m_timer;
};

} // namespace

WelcomePage::WelcomePage(const Context& context)
    : OnboardingPage(context)
    , m_title(new TextLabel)
    , m_subtitle(new TextLabel)
    , m_body(new TextLabel(TextLabel::Tone::quiet))
    , m_mascot(new Mascot(context.services))
{
    m_title->setObjectName(QStringLiteral("title"));
    m_title->setFont(theme::heading(2.2));
    m_subtitle->setObjectName(QStringLiteral("subtitle"));
    m_subtitle->setFont(theme::scaled(theme::textFont(), 1.25));
    m_body->setObjectName(QStringLiteral("body"));
    m_body->setFont(theme::scaled(theme::textFont(), 1.05));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(48, 12, 48, 0);
    column->setSpacing(0);
    column->addStretch(2);
    column->addWidget(m_mascot, 0, Qt::AlignHCenter);
    column->addSpacing(8);
    for (TextLabel* each : {m_title, m_subtitle, m_body}) {
        each->setAlignment(Qt::AlignHCenter);
        column->addWidget(each);
        column->addSpacing(each == m_title ? 6 : 12);
    }
    column->addStretch(3);
    retranslate();
}

void WelcomePage::retranslate()
{
    m_title->setText(say(u"Welcome to Nibbo", u"欢迎使用 Nibbo"));
    m_subtitle->setText(
        say(u"Your personal %1 AI coding companion.", u"你的专属 %1 AI 编码伙伴。").arg(systemName()));
    m_body->setText(say(u"Two quick steps: pick your pet, then connect your terminal agents.",
                        u"两个小步骤：先选宠物，再连接你的终端 agent。"));
    setAccessibleName(m_title->text());
    setAccessibleDescription(m_subtitle->text());
}

} // namespace nibbo
