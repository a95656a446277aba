#pragma once

#include "base/Language.h"
#include "settings/Settings.h"

#include <QColor>
#include <QFont>
#include <QPalette>

namespace nibbo {

enum class ColourScheme
{
    light,
    dark
};

/// The scheme that a palette speaks of: dark when its windows are darker than its text.
ColourScheme schemeOf(const QPalette& palette);

/// The colours of bubble and card; fixed here, so that nothing an agent sends can choose one.
struct BubbleColours
{
    QColor surface;
    QColor outline;
    QColor shadow;
    QColor text;
    QColor quietText;
    QColor inset;
    QColor insetOutline;
    QColor accent;
    QColor accentText;
    QColor onAccent;
    QColor danger;
    QColor dangerFill;
    QColor dangerOutline;
    QColor caution;
    QColor cautionFill;
    QColor control;
    QColor controlOutline;

    static const BubbleColours& of(ColourScheme scheme);
};

/// How the bubble is drawn, as the settings and the desktop say. A value.
struct BubbleLook
{
    ColourScheme scheme = ColourScheme::light;
    BubbleStyle style = BubbleStyle::normal;
    AppLanguage language = AppLanguage::en;
    bool showActivityLabel = true;
    bool showProviderChip = false;
    /// Translucency and soft shadows: only where there is a compositor.
    bool composited = true;
    /// Bubbles come and go at once.
    bool reducedMotion = false;

    bool operator==(const BubbleLook&) const = default;
    const BubbleColours& colours() const { return BubbleColours::of(scheme); }
};

/// Sizes of one bubble style for a base font, in device-independent pixels.
struct BubbleMetrics
{
    QFont font;
    QFont smallFont;
    QFont titleFont;
    QFont commandFont;
    double textWidth;
    int textLines;
    double cardWidth;
    int commandRows;
    double padding;
    double gap;
    double radius;

    static BubbleMetrics of(BubbleStyle style, const QFont& base);
};

} // namespace nibbo
