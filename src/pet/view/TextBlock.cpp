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

QTextOption optionFor(bool rightToLeft)
{
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    return option;
}

struct Span
{
    qsizetype start;
    qsizetype length;
};

/// Lays the layout out and gives its lines, at most one more than `limit`.
std::vector<Span> layOut(QTextLayout& layout, double width, int limit)
{
    std::vector<Span> spans;
    layout.beginLayout();
    while (static_cast<int>(spans.size()) <= limit) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        spans.push_back({line.textStart(), line.textLength()});
    }
    layout.endLayout();
    return spans;
}

/// Lays out the whole text as one line, starting at zero.
QSizeF oneLine(QTextLayout& layout)
{
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setNumColumns(static_cast<int>(layout.text().size()) + 1);
    line.setPosition({0, 0});
    layout.endLayout();
    return {line.naturalTextWidth(), std::ceil(line.height())};
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
    : m_font(font)
    , m_rightToLeft(text.isRightToLeft())
{
    if (text.isEmpty())
        return;
    QString words = text;
    words.replace(u'\n', QChar(QChar::LineSeparator));
    QTextLayout layout(words, m_font);
    layout.setTextOption(optionFor(m_rightToLeft));
    std::vector<Span> spans = layOut(layout, width, maximumLines);
    if (static_cast<int>(spans.size()) > maximumLines) {
        m_elided = true;
        const qsizetype last = spans[static_cast<size_t>(maximumLines) - 1].start;
        QString rest = words.mid(last);
        if (const qsizetype lineBreak = rest.indexOf(QChar(QChar::LineSeparator)); lineBreak >= 0)
            rest.truncate(lineBreak);
        spans.resize(static_cast<size_t>(maximumLines) - 1);
        for (const Span& span : spans)
            addLine(words.mid(span.start, span.length));
        addLine(elided(rest, m_font, width));
        return;
    }

    // The narrowest width that needs no more lines.
    const size_t lines = spans.size();
    if (lines > 1) {
        double tooNarrow = width * 0.5;
        double enough = width;
        for (int step = 0; step < 6; ++step) {
            const double middle = (tooNarrow + enough) / 2;
            (layOut(layout, middle, static_cast<int>(lines)).size() <= lines ? enough : tooNarrow) = middle;
        }
        spans = layOut(layout, enough, maximumLines);
    }
    for (const Span& span : spans)
        addLine(words.mid(span.start, span.length));
}

void TextBlock::addLine(QString line)
{
    while (!line.isEmpty() && (line.back().isSpace() || line.back() == QChar(QChar::LineSeparator)))
        line.chop(1);
    m_lines += line;
    QTextLayout layout(line, m_font);
    layout.setTextOption(optionFor(m_rightToLeft));
    const QSizeF size = oneLine(layout);
    m_size = QSizeF(std::max(m_size.width(), std::ceil(size.width())), m_size.height() + size.height());
}

/// Line by line: the blanks at which a paragraph was wrapped have no place in a line that ends on the right.
void TextBlock::draw(QPainter& painter, QPointF topLeft, double width, const QColor& colour) const
{
    painter.setPen(colour);
    double y = topLeft.y();
    for (const QString& line : m_lines) {
        QTextLayout layout(line, m_font);
        layout.setTextOption(optionFor(m_rightToLeft));
        const QSizeF size = oneLine(layout);
        layout.draw(&painter, {topLeft.x() + (m_rightToLeft ? width - size.width() : 0.0), y});
        y += size.height();
    }
}

} // namespace nibbo
