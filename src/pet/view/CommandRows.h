#pragma once

#include "approval/CommandDisplay.h"

#include <QFont>

#include <vector>

class QPainter;

namespace nibbo {

struct BubbleColours;

/// One row of a command on the card.
struct CommandRow
{
    std::vector<CommandPiece> pieces;
    /// The row goes on a line that did not fit.
    bool continues = false;

    QString text() const;
};

/// A command wrapped for a width in a fixed font: between words where that wastes little, else between any
/// two graphemes; escapes and marks stay in one piece. Nothing is left out and nothing is drawn beyond the
/// width.
class CommandRows final
{
public:
    CommandRows() = default;
    CommandRows(const CommandDisplay& display, const QFont& font, double width);

    int count() const { return static_cast<int>(m_rows.size()); }
    const CommandRow& row(int index) const { return m_rows[static_cast<size_t>(index)]; }
    /// At least one line took more than one row.
    bool wraps() const { return m_wraps; }
    double rowHeight() const { return m_rowHeight; }
    void draw(QPainter& painter, int index, QPointF topLeft, const BubbleColours& colours) const;

    /// What is drawn for verbatim text: an invisible mark on either side of every right-to-left word, so that
    /// words keep the order in which the command holds them.
    static QString inCommandOrder(const QString& verbatim);

private:
    std::vector<CommandRow> m_rows;
    QFont m_font;
    bool m_wraps = false;
    double m_width = 0.0;
    double m_rowHeight = 0.0;
};

} // namespace nibbo
