#pragma once

#include "agents/AgentEvent.h"
#include "base/Language.h"
#include "pet/PetState.h"

#include <QString>

#include <optional>

namespace nibbo {

/// What an agent does, as the pet shows it: a working pose and a few words in the language asked for.
struct Phrase
{
    PetState pose = PetState::coding;
    QString text;

    bool operator==(const Phrase&) const = default;

    /// The prefix of the language, then the text as it is.
    static QString reading(const QString& text, const TextPair& prefix, AppLanguage language);
    static QString searchingFor(const QString& query, AppLanguage language);
};

/// Puts an agent's doings into words. Stateless; any thread.
/// A character is what a reader counts as one: cutting never splits an emoji or an accent from its letter.
class AgentActivity final
{
public:
    /// The pose and the words of a tool call, from the tool's name (compared without regard to case) and what
    /// it acts on. The message has no say in it yet; it is part of the call so that a tool may use it.
    static Phrase classify(const std::optional<QString>& toolName, const std::optional<QString>& command,
                           const QString& message, AppLanguage language);
    /// One readable phrase for any event.
    static QString phrase(const AgentEvent& event, AppLanguage language);

    /// The first line that is not empty (the whole text when there is none), cut to `max` characters.
    static QString firstLine(const QString& text, int max);
    /// The last component of a path; the path itself when it has none.
    static QString basename(const QString& path);
    /// Without the quotes around it, as a first line of at most 40 characters.
    static QString unquote(const QString& text);
};

} // namespace nibbo
