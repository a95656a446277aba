#pragma once

#include "base/Language.h"

#include <QString>

#include <vector>

namespace nibbo {

/// A stretch of a command as it is shown. Only `verbatim` text stands in the command itself; the other two
/// are our words about what stands there, and are drawn so that no command can imitate them.
struct CommandPiece
{
    enum class Kind
    {
        verbatim,
        /// A character that would not be seen, or would change how others are seen, as <U+202E>.
        escape,
        /// A count in place of padding: a long run of blanks, of blank lines or a tab.
        mark
    };

    Kind kind = Kind::verbatim;
    QString text;

    bool operator==(const CommandPiece&) const = default;
};

/// One line of the command; a view wraps it further.
struct CommandLine
{
    std::vector<CommandPiece> pieces;

    QString text() const;
    bool operator==(const CommandLine&) const = default;
};

/// The exact command that a person is asked to allow, made safe to look at: every character of it is either
/// drawn as it is, escaped or counted, so that nothing hides and nothing reorders. Pure; any thread.
struct CommandDisplay
{
    std::vector<CommandLine> lines;
    /// How many characters were escaped; above zero the card warns.
    int escapedCharacters = 0;

    bool warns() const { return escapedCharacters > 0; }
    bool operator==(const CommandDisplay&) const = default;

    static CommandDisplay of(const QString& command, AppLanguage language);
};

/// True for a code point that a reader would not see, or that changes how its neighbours are seen: control,
/// format, bidirectional, zero-width, tag and filler characters, blanks other than the plain one, private,
/// unassigned and half characters.
bool isUnseen(char32_t codePoint);

} // namespace nibbo
