#include "approval/CommandDisplay.h"

#include <QChar>
#include <QList>

#include <algorithm>
#include <array>
#include <iterator>

namespace nibbo {
namespace {

/// From this length on a run of blanks is counted instead of drawn; deep indentation stays as it is.
constexpr qsizetype longBlankRun = 12;
/// From this length on a run of blank lines is counted instead of drawn.
constexpr qsizetype longBlankLineRun = 2;
/// Real scripts stack two or three marks on a letter; more of them paint over the lines around.
constexpr int marksOnOneLetter = 3;

struct Range
{
    char32_t first;
    char32_t last;
};

/// Invisible in practice although their category says letter, mark or symbol.
constexpr std::array invisibleRanges{
    Range{0x034F, 0x034F},   // combining grapheme joiner
    Range{0x115F, 0x1160},   // Hangul fillers
    Range{0x17B4, 0x17B5},   // Khmer inherent vowels
    Range{0x180B, 0x180F},   // Mongolian variation selectors
    Range{0x2800, 0x2800},   // empty Braille pattern
    Range{0x3164, 0x3164},   // Hangul filler
    Range{0xFE00, 0xFE0F},   // variation selectors
    Range{0xFFA0, 0xFFA0},   // half-width Hangul filler
    Range{0xFFF0, 0xFFFC},   // specials, the object replacement character
    Range{0x1D159, 0x1D159}, // musical null notehead
    Range{0xE0000, 0xE0FFF}, // tags, more variation selectors
};

bool isMark(char32_t codePoint)
{
    const QChar::Category category = QChar::category(codePoint);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing;
}

bool isBlank(QChar character)
{
    return character == u' ' || character == u'\t';
}

bool isBlankLine(QStringView line)
{
    return std::all_of(line.begin(), line.end(), isBlank);
}

QString escapeOf(char32_t codePoint)
{
    return QStringLiteral("<U+%1>").arg(static_cast<uint>(codePoint), 4, 16, QLatin1Char('0')).toUpper();
}

QString countOf(qsizetype count, AppLanguage language, const TextPair& noun)
{
    return QStringLiteral("‹%1 %2›").arg(QString::number(count), noun.in(language));
}

class LineBuilder final
{
public:
    void verbatim(QStringView text) { grow(CommandPiece::Kind::verbatim, text.toString()); }
    void escape(char32_t codePoint) { grow(CommandPiece::Kind::escape, escapeOf(codePoint)); }
    void mark(const QString& text) { m_line.pieces.push_back({CommandPiece::Kind::mark, text}); }
    CommandLine take() { return std::move(m_line); }

private:
    void grow(CommandPiece::Kind kind, const QString& text)
    {
        if (!m_line.pieces.empty() && m_line.pieces.back().kind == kind)
            m_line.pieces.back().text += text;
        else
            m_line.pieces.push_back({kind, text});
    }

    CommandLine m_line;
};

/// Walks one line code point by code point:
/// 1. a run of blanks is drawn when it is short, counted when it is long; a tab is always a mark, since its
///    width says nothing;
/// 2. what is unseen is escaped;
/// 3. a combining mark stays only on a letter and only as part of a small stack.
CommandLine displayLine(QStringView line, AppLanguage language, int& escaped)
{
    LineBuilder builder;
    int marksLeft = 0;
    for (qsizetype at = 0; at < line.size();) {
        if (isBlank(line[at])) {
            const qsizetype start = at;
            while (at < line.size() && isBlank(line[at]))
                ++at;
            const QStringView run = line.sliced(start, at - start);
            if (run.size() >= longBlankRun) {
                builder.mark(countOf(run.size(), language, {u"blanks", u"个空白"}));
            } else {
                for (const QChar blank : run) {
                    if (blank == u'\t')
                        builder.mark(QStringLiteral("⇥"));
                    else
                        builder.verbatim(QStringView(&blank, 1));
                }
            }
            marksLeft = 0;
            continue;
        }

        qsizetype length = 1;
        char32_t codePoint = line[at].unicode();
        if (line[at].isHighSurrogate() && at + 1 < line.size() && line[at + 1].isLowSurrogate()) {
            codePoint = QChar::surrogateToUcs4(line[at], line[at + 1]);
            length = 2;
        }
        const bool looseMark = isMark(codePoint) && marksLeft == 0;
        if (isUnseen(codePoint) || looseMark) {
            builder.escape(codePoint);
            ++escaped;
            marksLeft = 0;
        } else {
            builder.verbatim(line.sliced(at, length));
            if (isMark(codePoint))
                --marksLeft;
            else
                marksLeft =
                    QChar::isLetter(codePoint) || QChar::category(codePoint) == QChar::Mark_SpacingCombining
                        ? marksOnOneLetter
                        : 0;
        }
        at += length;
    }
    return builder.take();
}

} // namespace

bool isUnseen(char32_t codePoint)
{
    if (codePoint == U' ')
        return false;
    const auto holds = [codePoint](const Range& range) {
        return codePoint >= range.first && codePoint <= range.last;
    };
    if (std::any_of(invisibleRanges.begin(), invisibleRanges.end(), holds))
        return true;
    switch (QChar::category(codePoint)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString CommandLine::text() const
{
    QString all;
    for (const CommandPiece& piece : pieces)
        all += piece.text;
    return all;
}

CommandDisplay CommandDisplay::of(const QString& command, AppLanguage language)
{
    CommandDisplay display;
    const QList<QStringView> lines = QStringView(command).split(u'\n');
    for (qsizetype at = 0; at < lines.size();) {
        qsizetype end = at;
        while (end < lines.size() && isBlankLine(lines[end]))
            ++end;
        if (end - at >= longBlankLineRun) {
            const QString count = countOf(end - at, language, {u"blank lines", u"个空行"});
            display.lines.push_back({{{CommandPiece::Kind::mark, count}}});
            at = end;
            continue;
        }
        display.lines.push_back(displayLine(lines[at], language, display.escapedCharacters));
        ++at;
    }
    return display;
}

} // namespace nibbo
