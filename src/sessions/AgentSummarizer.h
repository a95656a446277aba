#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace nibbo {

/// Turns an agent's words into one short line. Asked and answering on the main thread; it may answer late or
/// never.
class AgentSummarizer
{
public:
    /// Session key, the line, and the very words that it sums up.
    using Deliver =
        std::function<void(const QString& sessionKey, const QString& text, const QString& forSay)>;

    virtual ~AgentSummarizer() = default;
    virtual void summarize(const QString& sessionKey, const QString& say,
                           const std::optional<QString>& detail) = 0;
    virtual void setDeliver(Deliver deliver) = 0;
};

} // namespace nibbo
