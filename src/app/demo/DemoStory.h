#pragma once

#include <QByteArray>
#include <QString>

#include <span>

namespace nibbo {

/// One call of a hook in the demo's story: when, of which agent, and what the agent hands it.
struct DemoBeat
{
    double second;
    const char* agent;
    const char* event;
    /// JSON without its session and folder, which the player adds.
    const char* payload;
    /// What a person who watches is told.
    const char* caption;
};

/// About two minutes of three agents, in order of time. It ends with some idle life.
std::span<const DemoBeat> demoStory();
inline constexpr double demoLength = 118;

} // namespace nibbo
