#include "pet/view/TextBlock.h"

#include "approval/CommandDisplay.h"

#include <QPainter>
#include <QTextBoundaryFinder>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <vector>

namespace nibbo {
namespace {

/// More than the largest bubble can hold, and little enough to be laid out at once.
constexpr qsizetype longestWords = 1500;

/// Invisible characters that scripts and emoji need to look right.
bool joinsGlyphs(char32_t codePoint)
{
    return codePoint == 0x200C || codePoint == 0x200D || codePoint == 0xFE0E || codePoint == 0xFE0F ||
           (codePoint >= 0xE0020 && codePoint <= 0xE007F);
}

qsizetype graphemeBoundaryAtOrBefore(const QString& text, qsizetype position)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(position);
    return finder.isAtBoundary() ? position : std::max<qsizetype>(0, finder.toPreviousBoundary());
}

QTextOption optionFor(const QString& text)
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    return option;
}

struct Span
{
    qsizetype start;
    qsizetype length;
    double width;
};

/// Lays the layout out and gives its lines, at most one more than `limit`.
std::vector<Span> layOut(QTextLayout& layout, double width, int limit)
{
    std::vector<Span> spans;
    double y = 0;
    layout.beginLayout();
    while (static_cast<int>(spans.size()) <= limit) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        line.setPosition({0, y});
        y += std::ceil(line.height());
        spans.push_back({line.textStart(), line.textLength(), line.naturalTextWidth()});
    }
    layout.endLayout();
    return spans;
}

/// The longest beginning of `rest` that fits with "…" behind it, cut between graphemes.
QString elided(const QString& rest, const QFont& font, double width)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, rest);
    std::vector<qsizetype> boundaries{0};
    while (finder.toNextBoundary() > 0)
        boundaries.push_back(finder.position());
    const QFontMetricsF metrics(font);
    const auto withDots = [&rest](qsizetype end) {
        QString cut = rest.left(end);
        while (cut.endsWith(u' '))
            cut.chop(1);
        return cut + u'…';
    };
    const auto tooLong = std::partition_point(boundaries.begin(), boundaries.end(), [&](qsizetype end) {
        return metrics.horizontalAdvance(withDots(end)) <= width;
    });
    return withDots(tooLong == boundaries.begin() ? 0 : *std::prev(tooLong));
}

} // namespace

QString calmed(const QString& words)
{
    const QString text = words.left(graphemeBoundaryAtOrBefore(words, std::min(words.size(), longestWords)));
    QString calm;
    calm.reserve(text.size());
    int breaks = 0;
    bool blank = false;
    for (const char32_t codePoint : text.toUcs4()) {
        const QChar::Category category = QChar::category(codePoint);
        if (codePoint == U'\n' || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph) {
            ++breaks;
            continue;
        }
        if (QChar::isSpace(codePoint)) {
            blank = true;
            continue;
        }
        if (isUnseen(codePoint) && !joinsGlyphs(codePoint))
            continue;
        if (breaks > 0 && !calm.isEmpty())
            calm += u'\n';
        else if (blank && !calm.isEmpty())
            calm += u' ';
        breaks = 0;
        blank = false;
        calm += QString::fromUcs4(&codePoint, 1);
    }
    return calm;
}

TextBlock::TextBlock(const QString& text, const QFont& font, double width, int maximumLines)
    : m_text(text)
    , m_font(font)
    , m_wrapWidth(width)
{
    m_text.replace(u'\n', QChar(QChar::LineSeparator));
    QTextLayout layout(m_text, m_font);
    layout.setTextOption(optionFor(m_text));
    std::vector<Span> spans = layOut(layout, width, maximumLines);
    if (static_cast<int>(spans.size()) > maximumLines) {
        m_elided = true;
        const qsizetype last = spans[static_cast<size_t>(maximumLines) - 1].start;
        QString rest = m_text.mid(last);
        if (const qsizetype lineBreak = rest.indexOf(QChar(QChar::LineSeparator)); lineBreak >= 0)
            rest.truncate(lineBreak);
        m_text = m_text.left(last) + elided(rest, m_font, width);
        layout.setText(m_text);
        spans = layOut(layout, width, maximumLines);
    }

    // The narrowest width that needs no more lines.
    const size_t lines = spans.size();
    if (lines > 1 && !m_elided) {
        double tooNarrow = width * 0.5;
        double enough = width;
        for (int step = 0; step < 6; ++step) {
            const double middle = (tooNarrow + enough) / 2;
            (layOut(layout, middle, static_cast<int>(lines)).size() <= lines ? enough : tooNarrow) = middle;
        }
        spans = layOut(layout, enough, maximumLines);
        m_wrapWidth = enough;
    }
    double widest = 0;
    for (const Span& span : spans)
        widest = std::max(widest, span.width);
    double height = 0;
    for (int line = 0; line < layout.lineCount(); ++line)
        height += std::ceil(layout.lineAt(line).height());
    m_size = QSizeF(std::ceil(widest), height);
}

QStringList TextBlock::lines() const
{
    QTextLayout layout(m_text, m_font);
    layout.setTextOption(optionFor(m_text));
    QStringList all;
    for (const Span& span : layOut(layout, m_wrapWidth, 1000))
        all += m_text.mid(span.start, span.length).trimmed();
    return all;
}

void TextBlock::draw(QPainter& painter, QPointF topLeft, const QColor& colour) const
{
    draw(painter, topLeft, m_size.width(), colour);
}

void TextBlock::draw(QPainter& painter, QPointF topLeft, double width, const QColor& colour) const
{
    if (m_text.isEmpty())
        return;
    QTextLayout layout(m_text, m_font);
    layout.setTextOption(optionFor(m_text));
    layOut(layout, m_wrapWidth, 1000);
    // Right-to-left lines end at the wrapping width.
    const double shift = m_text.isRightToLeft() ? width - m_wrapWidth : 0.0;
    painter.setPen(colour);
    layout.draw(&painter, topLeft + QPointF(shift, 0));
}

} // namespace nibbo
