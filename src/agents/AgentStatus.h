#pragma once

namespace nibbo {

/// What is known of an agent tool on this machine.
enum class AgentStatus
{
    unknown,
    connected,
    notFound,
    running
};

} // namespace nibbo
