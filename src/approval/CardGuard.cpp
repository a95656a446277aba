#include "approval/CardGuard.h"

#include <algorithm>

namespace nibbo {

CardGuard::CardGuard(const Clock& clock)
    : m_clock(clock)
{}

void CardGuard::changed()
{
    m_shown = true;
    m_endSeen = false;
    m_pressed.reset();
    m_settledAt = m_clock.now() + settleTime;
}

void CardGuard::gone()
{
    m_shown = false;
    m_pressed.reset();
}

void CardGuard::endSeen()
{
    m_endSeen = true;
}

bool CardGuard::isLive(CardButton button) const
{
    const auto now = m_clock.now();
    if (!m_shown || now < m_restedAt)
        return false;
    return button == CardButton::deny || (m_endSeen && now >= m_settledAt);
}

std::optional<std::chrono::nanoseconds> CardGuard::nextWake() const
{
    if (!m_shown)
        return std::nullopt;
    const auto now = m_clock.now();
    if (now < m_restedAt)
        return m_restedAt;
    if (m_endSeen && now < m_settledAt)
        return m_settledAt;
    return std::nullopt;
}

void CardGuard::press(std::optional<CardButton> button)
{
    m_pressed = button && isLive(*button) ? button : std::nullopt;
}

std::optional<CardButton> CardGuard::release(std::optional<CardButton> button)
{
    const std::optional<CardButton> pressed = m_pressed;
    m_pressed.reset();
    if (!pressed || pressed != button || !isLive(*pressed))
        return std::nullopt;
    m_restedAt = m_clock.now() + restTime;
    return pressed;
}

} // namespace nibbo
