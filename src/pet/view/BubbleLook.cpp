#include "pet/view/BubbleLook.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>

namespace nibbo {
namespace {

QColor withAlpha(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

BubbleColours lightColours()
{
    const QColor danger(0xC7, 0x2B, 0x3A);
    const QColor caution(0x8A, 0x5A, 0x00);
    BubbleColours colours;
    colours.surface = QColor(0xFF, 0xFE, 0xFC);
    colours.outline = QColor(0x2E, 0x22, 0x2A, 34);
    colours.shadow = QColor(0x2E, 0x22, 0x2A);
    colours.text = QColor(0x2B, 0x26, 0x2F);
    colours.quietText = QColor(0x6F, 0x68, 0x73);
    colours.inset = QColor(0xF6, 0xF3, 0xF2);
    colours.insetOutline = QColor(0x2E, 0x22, 0x2A, 20);
    colours.accent = QColor(0x66, 0x50, 0xC9);
    colours.accentText = colours.accent;
    colours.onAccent = QColor(0xFF, 0xFF, 0xFF);
    colours.danger = danger;
    colours.dangerFill = withAlpha(danger, 20);
    colours.dangerOutline = withAlpha(danger, 90);
    colours.caution = caution;
    colours.cautionFill = QColor(0xFF, 0xE2, 0xA0);
    colours.control = QColor(0xFC, 0xFA, 0xF9);
    colours.controlOutline = QColor(0x2E, 0x22, 0x2A, 48);
    return colours;
}

BubbleColours darkColours()
{
    const QColor danger(0xFF, 0x8A, 0x8F);
    BubbleColours colours;
    colours.surface = QColor(0x2B, 0x28, 0x30);
    colours.outline = QColor(0xFF, 0xFF, 0xFF, 34);
    colours.shadow = QColor(0x00, 0x00, 0x00);
    colours.text = QColor(0xF2, 0xEE, 0xF2);
    colours.quietText = QColor(0xB0, 0xA8, 0xB4);
    colours.inset = QColor(0x1F, 0x1C, 0x23);
    colours.insetOutline = QColor(0xFF, 0xFF, 0xFF, 22);
    colours.accent = QColor(0x76, 0x5F, 0xDB);
    colours.accentText = QColor(0xBB, 0xAE, 0xFF);
    colours.onAccent = QColor(0xFF, 0xFF, 0xFF);
    colours.danger = danger;
    colours.dangerFill = withAlpha(danger, 30);
    colours.dangerOutline = withAlpha(danger, 110);
    colours.caution = QColor(0xFF, 0xD1, 0x7A);
    colours.cautionFill = QColor(0x57, 0x44, 0x17);
    colours.control = QColor(0x3A, 0x36, 0x41);
    colours.controlOutline = QColor(0xFF, 0xFF, 0xFF, 46);
    return colours;
}

struct StyleRow
{
    double fontScale;
    double textWidth; // in heights of the text font
    int textLines;
    double cardWidth; // in heights of the text font
    int commandRows;
    double padding;
    double radius;
};

StyleRow rowOf(BubbleStyle style)
{
    switch (style) {
    case BubbleStyle::compact:
        return {0.94, 12.0, 2, 17.0, 4, 9.0, 12.0};
    case BubbleStyle::large:
        return {1.18, 17.0, 6, 20.0, 8, 15.0, 17.0};
    case BubbleStyle::normal:
        break;
    }
    return {1.05, 14.5, 4, 18.5, 6, 12.0, 14.0};
}

/// Left to itself, Qt draws Han characters in Japanese shapes where the user's font has none. Named behind
/// that font these faces give the Chinese ones.
QFont withHanFaces(QFont font)
{
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

} // namespace

ColourScheme schemeOf(const QPalette& palette)
{
    const bool dark =
        palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
    return dark ? ColourScheme::dark : ColourScheme::light;
}

const BubbleColours& BubbleColours::of(ColourScheme scheme)
{
    static const BubbleColours light = lightColours();
    static const BubbleColours dark = darkColours();
    return scheme == ColourScheme::dark ? dark : light;
}

BubbleMetrics BubbleMetrics::of(BubbleStyle style, const QFont& base)
{
    const StyleRow row = rowOf(style);
    BubbleMetrics metrics;
    metrics.font = withHanFaces(scaled(base, row.fontScale));
    metrics.smallFont = scaled(metrics.font, 0.9);
    metrics.titleFont = metrics.font;
    metrics.titleFont.setWeight(QFont::DemiBold);
    metrics.commandFont = withHanFaces(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    if (metrics.smallFont.pointSizeF() > 0)
        metrics.commandFont.setPointSizeF(metrics.smallFont.pointSizeF());
    else
        metrics.commandFont.setPixelSize(metrics.smallFont.pixelSize());
    metrics.commandFont.setStyleHint(QFont::Monospace);
    const double height = QFontMetricsF(metrics.font).height();
    metrics.textWidth = row.textWidth * height;
    metrics.textLines = row.textLines;
    metrics.cardWidth = row.cardWidth * height;
    metrics.commandRows = row.commandRows;
    metrics.padding = row.padding;
    metrics.gap = row.padding * 0.6;
    metrics.radius = row.radius;
    return metrics;
}

} // namespace nibbo
