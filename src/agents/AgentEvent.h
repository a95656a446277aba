#pragma once

#include "agents/AgentProvider.h"
#include "base/Result.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <optional>

namespace nibbo {

/// The closed set of things that an event can say. Encoded as the case's name.
enum class AgentEventType
{
    agentStarted,
    thinking,
    coding,
    contextCompacting,
    responding,
    approvalRequired,
    inputRequired,
    taskCompleted,
    taskFailed,
    riskyActionDetected,
    agentStopped
};

QString rawValue(AgentEventType type);
/// Exact and case-sensitive; nothing for an unknown text.
std::optional<AgentEventType> agentEventType(const QString& rawValue);

/// A random id. Nothing that comes from outside names one, so it needs to be unlike every other, not secret.
QUuid freshEventId();

/// The normalised event that everything behind the socket works with. It carries no time of its own.
struct AgentEvent
{
    /// Made fresh for every received line; also the key under which an approval waits.
    QUuid id = freshEventId();
    AgentProvider provider{QStringLiteral("claude")};
    AgentEventType type = AgentEventType::thinking;
    QString message;
    std::optional<QString> command;
    std::optional<QString> toolName;
    std::optional<QString> say;
    std::optional<QString> phase;
    std::optional<QString> cwd;
    std::optional<QString> sessionId;
    std::optional<qint32> exitCode;

    bool operator==(const AgentEvent&) const = default;

    QJsonObject toJson() const;
    static Result<AgentEvent> fromJson(const QJsonObject& object);
};

/// One line of the wire as it came; every field may be absent.
struct IncomingEvent
{
    std::optional<QString> provider;
    std::optional<QString> type;
    std::optional<QString> message;
    std::optional<QString> command;
    std::optional<QString> toolName;
    std::optional<QString> say;
    std::optional<QString> phase;
    std::optional<QString> cwd;
    std::optional<QString> sessionId;
    std::optional<qint32> exitCode;

    /// Fails for what is no JSON object, for a field of the wrong type and for bytes that are no UTF-8.
    static Result<IncomingEvent> decode(const QByteArray& line);
    AgentEvent toAgentEvent() const;
};

} // namespace nibbo
