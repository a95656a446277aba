#pragma once

#include <QColor>
#include <QFont>
#include <QSizeF>
#include <QString>
#include <QStringList>

class QPainter;

namespace nibbo {

/// An agent's words made fit for a bubble: controls and text-direction overrides taken out, blanks and blank
/// lines drawn together, cut between two graphemes when they are longer than any bubble. Still plain text.
/// Only for words; commands are shown exactly by `CommandDisplay`.
QString calmed(const QString& words);

/// A few lines of plain text, wrapped and elided for a width. When the text is longer than its lines, the
/// last line ends in "…" and never splits a grapheme. Right-to-left text stands on the right. A value.
class TextBlock final
{
public:
    TextBlock() = default;
    TextBlock(const QString& text, const QFont& font, double width, int maximumLines);

    /// As small as the text allows: lines are balanced, so that no last word stands alone.
    QSizeF size() const { return m_size; }
    bool isElided() const { return m_elided; }
    const QStringList& lines() const { return m_lines; }
    /// Right-to-left text stands on the right of `width`.
    void draw(QPainter& painter, QPointF topLeft, double width, const QColor& colour) const;

private:
    void addLine(QString line);

    QStringList m_lines;
    QFont m_font;
    QSizeF m_size;
    bool m_rightToLeft = false;
    bool m_elided = false;
};

} // namespace nibbo
