#pragma once

#include "base/Time.h"

#include <optional>

namespace nibbo {

enum class CardButton
{
    deny,
    allow,
    allowAll
};

/// Decides which presses on the approval card count, so that neither a slip of the hand nor a well-timed
/// request can answer:
/// - Allow and Allow All are dead for `settleTime` after the card appears or changes, and until the end of
/// its
///   command has been seen; Deny is live at once;
/// - an answer needs press and release on the same button, live both times, with no change in between;
/// - after an answer every button, also those of the next card, is dead for `restTime`, so that the second
///   click of a double click answers nothing.
/// Pure but for the clock; one thread.
class CardGuard final
{
public:
    static constexpr Milliseconds settleTime{800};
    static constexpr Milliseconds restTime{500};

    explicit CardGuard(const Clock& clock);

    /// A card appeared, or what it says or where its buttons are has changed. Forgets a press under way and
    /// that the end was seen.
    void changed();
    /// The card has gone: nothing is live until `changed`.
    void gone();
    /// The last line of the command stands on the card, or stood there since the last change.
    void endSeen();

    bool isLive(CardButton button) const;
    bool hasSeenEnd() const { return m_endSeen; }
    /// When the next button comes to life by itself; nothing when only an event can change something.
    std::optional<std::chrono::nanoseconds> nextWake() const;

    /// The pointer went down on the button, or on none.
    void press(std::optional<CardButton> button);
    /// The pointer went up over the button, or over none: the answer, if this is one.
    [[nodiscard]] std::optional<CardButton> release(std::optional<CardButton> button);
    void cancelPress() { m_pressed.reset(); }

private:
    const Clock& m_clock;
    bool m_shown = false;
    bool m_endSeen = false;
    std::optional<CardButton> m_pressed;
    std::chrono::nanoseconds m_settledAt{};
    std::chrono::nanoseconds m_restedAt{std::chrono::nanoseconds::min()};
};

} // namespace nibbo
