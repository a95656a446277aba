#include "settings/view/Theme.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QPushButton>
#include <QSvgRenderer>

#include <array>
#include <cmath>

// Outside any namespace, as the macro asks for.
static void initialiseResources()
{
    Q_INIT_RESOURCE(BubbleIcons);
    Q_INIT_RESOURCE(SettingsIcons);
}

namespace nibbo::theme {
namespace {

struct AccentRow
{
    const char16_t* name;
    QRgb light;
    QRgb dark;
};

// The first stands for every other text. White text must be readable on all of them.
constexpr std::array<AccentRow, 4> accents{{
    {u"pink", 0xffd23a72, 0xffd9457d},
    {u"blue", 0xff2f6bd8, 0xff3b78e6},
    {u"green", 0xff1f7f4f, 0xff258a58},
    {u"purple", 0xff7a4bd0, 0xff8a5be0},
}};

} // namespace

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QColor accent(const QString& themeColor, const QPalette& palette)
{
    const AccentRow* row = accents.data();
    for (const AccentRow& each : accents) {
        if (themeColor == QStringView(each.name))
            row = &each;
    }
    return QColor::fromRgb(isDark(palette) ? row->dark : row->light);
}

QColor mixed(const QColor& one, const QColor& other, double share)
{
    const auto part = [share](int from, int to) { return qRound(from + (to - from) * share); };
    return {part(one.red(), other.red()), part(one.green(), other.green()), part(one.blue(), other.blue())};
}

QPalette palette(const QPalette& desktop, const QString& themeColor)
{
    QPalette result;
    const QColor colour = accent(themeColor, desktop);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        result.setColor(group, QPalette::Highlight, colour);
        result.setColor(group, QPalette::HighlightedText, Qt::white);
        result.setColor(group, QPalette::LinkVisited,
                        isDark(desktop) ? QColor(0xff, 0xb4, 0x6b) : QColor(0xa8, 0x4a, 0x00));
        result.setColor(
            group, QPalette::PlaceholderText,
            mixed(desktop.color(group, QPalette::WindowText), desktop.color(group, QPalette::Window), 0.36));
    }
    return result;
}

QPalette darkDesktop()
{
    const QColor window(0x2b, 0x2d, 0x33);
    QPalette dark(QColor(0x3a, 0x3d, 0x45), window);
    dark.setColor(QPalette::Base, QColor(0x1f, 0x20, 0x25));
    return dark;
}

QColor raised(const QPalette& palette)
{
    return isDark(palette)
               ? mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.055)
               : palette.color(QPalette::Base);
}

QColor hairline(const QPalette& palette)
{
    return mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.13);
}

QColor sidebar(const QPalette& palette)
{
    return mixed(palette.color(QPalette::Window),
                 isDark(palette) ? Qt::black : palette.color(QPalette::WindowText),
                 isDark(palette) ? 0.16 : 0.045);
}

QFont textFont()
{
    QFont font = QApplication::font();
    // What a generic name as "Sans Serif" stands for, or the Han faces would count as the first real choice.
    QStringList families{QFontInfo(font).family()};
    families << QStringLiteral("Noto Sans CJK SC") << QStringLiteral("Source Han Sans SC")
             << QStringLiteral("WenQuanYi Micro Hei");
    font.setFamilies(families);
    return font;
}

QFont scaled(QFont font, double factor)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    return font;
}

QFont heading(double factor)
{
    QFont font = scaled(textFont(), factor);
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont monospace(const QFont& beside)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::Monospace);
    if (beside.pointSizeF() > 0)
        font.setPointSizeF(beside.pointSizeF());
    else
        font.setPixelSize(beside.pixelSize());
    return font;
}

void makeRoomy(QPushButton& button)
{
    constexpr int besides = 30;
    constexpr int above = 12;
    button.setMinimumSize(0, 0);
    const QFontMetrics metrics = button.fontMetrics();
    button.setMinimumSize(button.sizeHint().expandedTo(
        {metrics.horizontalAdvance(button.text()) + besides, metrics.height() + above}));
}

QPixmap symbol(const QString& file, int side, double devicePixelRatio, const QColor& colour)
{
    initialiseResources();
    const int pixels = static_cast<int>(std::ceil(side * devicePixelRatio));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    if (!QFile::exists(file))
        return pixmap;
    QPainter painter(&pixmap);
    QSvgRenderer renderer(file);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), colour);
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QString providerSymbol(const QString& providerId)
{
    return QStringLiteral(":/icons/providers/%1.svg").arg(providerId);
}

} // namespace nibbo::theme
