#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPalette>
#include <QPixmap>
#include <QString>

class QPushButton;

/// The look of the windows: every colour comes from the desktop's palette but for the user's accent.
namespace nibbo::theme {

bool isDark(const QPalette& palette);
/// "blue", "green" and "purple" are themselves; any other text is pink.
QColor accent(const QString& themeColor, const QPalette& palette);
/// What differs from the desktop's palette: the accent in place of its selection and links, a readable quiet
/// text under `PlaceholderText`, and what warns under `LinkVisited`.
QPalette palette(const QPalette& desktop, const QString& themeColor);

/// What groups of settings lie on.
/// Where the desktop says dark and its palette does not.
QPalette darkDesktop();

QColor raised(const QPalette& palette);
QColor hairline(const QPalette& palette);
QColor sidebar(const QPalette& palette);
QColor mixed(const QColor& one, const QColor& other, double share);

/// The desktop's font, with faces behind it that draw Han characters in their Chinese shapes.
QFont textFont();
QFont scaled(QFont font, double factor);
QFont heading(double factor);
QFont monospace(const QFont& beside);

/// Some styles leave a button's text hardly any room; asks for more than they do.
void makeRoomy(QPushButton& button);

/// A monochrome symbol of ours in one colour.
QPixmap symbol(const QString& file, int side, double devicePixelRatio, const QColor& colour);
QString providerSymbol(const QString& providerId);

} // namespace nibbo::theme
