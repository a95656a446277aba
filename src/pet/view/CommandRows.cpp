#include "pet/view/CommandRows.h"

#include "pet/view/BubbleLook.h"

#include <QFontMetricsF>
#include <QHash>
#include <QPainter>
#include <QTextBoundaryFinder>

#include <array>
#include <cmath>

namespace nibbo {
namespace {

/// A row may end early at a blank when this share of it is filled.
constexpr double worthBreakingAtBlank = 0.55;
constexpr double pieceMargin = 2.0;

/// Widths of graphemes in one font. ASCII, which is nearly everything, is a look-up.
class Widths final
{
public:
    explicit Widths(const QFont& font)
        : m_metrics(font)
    {
        for (size_t character = 0; character < m_ascii.size(); ++character)
            m_ascii[character] = m_metrics.horizontalAdvance(QChar(static_cast<char16_t>(character)));
    }

    double ofAscii(QChar character) const { return m_ascii[character.unicode()]; }
    double of(const QString& grapheme)
    {
        const auto known = m_others.constFind(grapheme);
        if (known != m_others.constEnd())
            return *known;
        return *m_others.insert(grapheme, m_metrics.horizontalAdvance(grapheme));
    }

private:
    QFontMetricsF m_metrics;
    std::array<double, 128> m_ascii{};
    QHash<QString, double> m_others;
};

double pieceWidth(const CommandPiece& piece, const QFontMetricsF& metrics)
{
    if (piece.kind == CommandPiece::Kind::verbatim)
        return metrics.horizontalAdvance(CommandRows::inCommandOrder(piece.text));
    return metrics.horizontalAdvance(piece.text) + 2 * pieceMargin;
}

/// Fills rows piece by piece.
class Wrapper final
{
public:
    Wrapper(std::vector<CommandRow>& rows, Widths& widths, double width)
        : m_rows(rows)
        , m_widths(widths)
        , m_width(width)
    {}

    void line(const CommandLine& line)
    {
        m_rows.push_back({});
        m_used = 0;
        m_afterBlank = -1;
        for (const CommandPiece& piece : line.pieces) {
            if (piece.kind == CommandPiece::Kind::verbatim)
                verbatim(piece.text);
            else
                whole(piece);
        }
    }

private:
    void nextRow()
    {
        m_rows.push_back({{}, true});
        m_used = 0;
        m_afterBlank = -1;
    }

    void whole(const CommandPiece& piece)
    {
        const double width = m_widths.of(piece.text) + 2 * pieceMargin;
        if (m_used > 0 && m_used + width > m_width)
            nextRow();
        m_rows.back().pieces.push_back(piece);
        m_used += width;
        m_afterBlank = -1;
    }

    void verbatim(const QString& text)
    {
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
        qsizetype rowStart = 0;
        m_afterBlank = -1;
        for (qsizetype at = 0; at < text.size();) {
            qsizetype next = at + 1;
            double width = 0;
            const bool ascii = text[at].unicode() < 128;
            if (ascii && (next == text.size() || text[next].unicode() < 128)) {
                width = m_widths.ofAscii(text[at]);
            } else {
                finder.setPosition(at);
                next = finder.toNextBoundary();
                if (next <= at)
                    next = text.size();
                width = m_widths.of(text.mid(at, next - at));
            }
            if (m_used > 0 && m_used + width > m_width) {
                const bool atBlank =
                    m_afterBlank > rowStart && m_usedAfterBlank > m_width * worthBreakingAtBlank;
                const qsizetype end = atBlank ? m_afterBlank : at;
                const double carried = atBlank ? m_used - m_usedAfterBlank : 0.0;
                append(text.mid(rowStart, end - rowStart));
                nextRow();
                rowStart = end;
                m_used = carried;
            }
            m_used += width;
            if (text[at] == u' ') {
                m_afterBlank = next;
                m_usedAfterBlank = m_used;
            }
            at = next;
        }
        append(text.mid(rowStart));
    }

    void append(const QString& text)
    {
        if (!text.isEmpty())
            m_rows.back().pieces.push_back({CommandPiece::Kind::verbatim, text});
    }

    std::vector<CommandRow>& m_rows;
    Widths& m_widths;
    double m_width;
    double m_used = 0.0;
    qsizetype m_afterBlank = -1; // within the verbatim piece under way
    double m_usedAfterBlank = 0.0;
};

bool isRightToLeft(char32_t codePoint)
{
    const QChar::Direction direction = QChar::direction(codePoint);
    return direction == QChar::DirR || direction == QChar::DirAL;
}

} // namespace

QString CommandRow::text() const
{
    QString all;
    for (const CommandPiece& piece : pieces)
        all += piece.text;
    return all;
}

CommandRows::CommandRows(const CommandDisplay& display, const QFont& font, double width)
    : m_font(font)
    , m_width(width)
    , m_rowHeight(std::ceil(QFontMetricsF(font).height() * 1.12))
{
    Widths widths(font);
    Wrapper wrapper(m_rows, widths, width);
    for (const CommandLine& line : display.lines)
        wrapper.line(line);
    m_wraps = m_rows.size() > display.lines.size();
}

QString CommandRows::inCommandOrder(const QString& verbatim)
{
    const auto mayTurn = [](QChar character) { return character.unicode() >= 0x0590; };
    if (std::none_of(verbatim.begin(), verbatim.end(), mayTurn))
        return verbatim;
    constexpr QChar leftToRightMark(0x200E);
    QString ordered;
    bool inside = false;
    for (const char32_t codePoint : verbatim.toUcs4()) {
        const bool belongs =
            isRightToLeft(codePoint) || (inside && QChar::category(codePoint) == QChar::Mark_NonSpacing);
        if (belongs != inside)
            ordered += leftToRightMark;
        inside = belongs;
        ordered += QString::fromUcs4(&codePoint, 1);
    }
    return inside ? ordered + leftToRightMark : ordered;
}

void CommandRows::draw(QPainter& painter, int index, QPointF topLeft, const BubbleColours& colours) const
{
    const QFontMetricsF metrics(m_font);
    const CommandRow& line = row(index);
    double total = 0;
    for (const CommandPiece& piece : line.pieces)
        total += pieceWidth(piece, metrics);

    painter.save();
    painter.setFont(m_font);
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.translate(topLeft);
    // Shaped text can come out wider than its graphemes one by one; squeezed it stays in sight.
    if (total > m_width)
        painter.scale(m_width / total, 1.0);
    const double baseline = (m_rowHeight - metrics.height()) / 2 + metrics.ascent();
    double x = 0;
    for (const CommandPiece& piece : line.pieces) {
        const double width = pieceWidth(piece, metrics);
        if (piece.kind == CommandPiece::Kind::verbatim) {
            painter.setPen(colours.text);
            painter.drawText(QPointF(x, baseline), inCommandOrder(piece.text));
        } else {
            const bool escape = piece.kind == CommandPiece::Kind::escape;
            painter.setPen(Qt::NoPen);
            painter.setBrush(escape ? colours.cautionFill : colours.insetOutline);
            painter.drawRoundedRect(QRectF(x + 0.5, 1, width - 1, m_rowHeight - 2), 3, 3);
            painter.setPen(escape ? colours.caution : colours.quietText);
            painter.drawText(QPointF(x + pieceMargin, baseline), piece.text);
        }
        x += width;
    }
    painter.restore();
}

} // namespace nibbo
