#include "agents/AgentEvent.h"

#include <QJsonDocument>
#include <QRandomGenerator>
#include <QUtf8StringView>

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace nibbo {
namespace {

constexpr std::array<std::pair<AgentEventType, const char16_t*>, 11> typeNames{{
    {AgentEventType::agentStarted, u"agentStarted"},
    {AgentEventType::thinking, u"thinking"},
    {AgentEventType::coding, u"coding"},
    {AgentEventType::contextCompacting, u"contextCompacting"},
    {AgentEventType::responding, u"responding"},
    {AgentEventType::approvalRequired, u"approvalRequired"},
    {AgentEventType::inputRequired, u"inputRequired"},
    {AgentEventType::taskCompleted, u"taskCompleted"},
    {AgentEventType::taskFailed, u"taskFailed"},
    {AgentEventType::riskyActionDetected, u"riskyActionDetected"},
    {AgentEventType::agentStopped, u"agentStopped"},
}};

/// Reads one field; false when it is there with another type. Null and a missing key are both absent.
bool read(const QJsonObject& object, QLatin1String key, std::optional<QString>& field)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    if (!value.isString())
        return false;
    field = value.toString();
    return true;
}

bool read(const QJsonObject& object, QLatin1String key, std::optional<qint32>& field)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!value.isDouble() || number != std::trunc(number) || number < std::numeric_limits<qint32>::min() ||
        number > std::numeric_limits<qint32>::max())
        return false;
    field = static_cast<qint32>(number);
    return true;
}

/// The fields that the wire and the normalised record share, walked in one place.
template <typename Record, typename Visit>
bool visitOptionalFields(Record& record, Visit visit)
{
    return visit(QLatin1String("command"), record.command) &&
           visit(QLatin1String("toolName"), record.toolName) && visit(QLatin1String("say"), record.say) &&
           visit(QLatin1String("phase"), record.phase) && visit(QLatin1String("cwd"), record.cwd) &&
           visit(QLatin1String("sessionId"), record.sessionId) &&
           visit(QLatin1String("exitCode"), record.exitCode);
}

QJsonValue toValue(const QString& text)
{
    return text;
}

QJsonValue toValue(qint32 number)
{
    return number;
}

} // namespace

QString rawValue(AgentEventType type)
{
    return QString::fromUtf16(typeNames[static_cast<std::size_t>(type)].second);
}

std::optional<AgentEventType> agentEventType(const QString& rawValue)
{
    for (const auto& [type, name] : typeNames) {
        if (rawValue == QStringView(name))
            return type;
    }
    return std::nullopt;
}

QUuid freshEventId()
{
    // Asking the system for every id would cost as much as reading the event.
    std::array<quint32, 4> bits{};
    QRandomGenerator::global()->fillRange(bits.data(), static_cast<qsizetype>(bits.size()));
    const auto byte = [&bits](int shift) { return static_cast<uchar>(bits[3] >> shift); };
    return QUuid(bits[0], static_cast<ushort>(bits[1] >> 16),
                 static_cast<ushort>((bits[1] & 0x0FFFU) | 0x4000U),
                 static_cast<uchar>(((bits[2] >> 8) & 0x3FU) | 0x80U), static_cast<uchar>(bits[2]),
                 static_cast<uchar>(bits[2] >> 16), static_cast<uchar>(bits[2] >> 24), byte(0), byte(8),
                 byte(16), byte(24));
}

QJsonObject AgentEvent::toJson() const
{
    QJsonObject object{{QStringLiteral("id"), id.toString(QUuid::WithoutBraces)},
                       {QStringLiteral("provider"), provider.rawValue()},
                       {QStringLiteral("type"), nibbo::rawValue(type)},
                       {QStringLiteral("message"), message}};
    visitOptionalFields(*this, [&object](QLatin1String key, const auto& field) {
        if (field)
            object.insert(key, toValue(*field));
        return true;
    });
    return object;
}

Result<AgentEvent> AgentEvent::fromJson(const QJsonObject& object)
{
    AgentEvent event;
    std::optional<QString> id;
    std::optional<QString> provider;
    std::optional<QString> type;
    std::optional<QString> message;
    const auto field = [&object](QLatin1String key, auto& into) { return read(object, key, into); };
    if (!field(QLatin1String("id"), id) || !field(QLatin1String("provider"), provider) ||
        !field(QLatin1String("type"), type) || !field(QLatin1String("message"), message) ||
        !visitOptionalFields(event, field))
        return Failure{QStringLiteral("a field of the event has the wrong type")};
    if (!id || !provider || !type || !message)
        return Failure{QStringLiteral("the event lacks \"id\", \"provider\", \"type\" or \"message\"")};
    event.id = QUuid::fromString(*id);
    const std::optional<AgentEventType> known = agentEventType(*type);
    if (event.id.isNull() || !known)
        return Failure{QStringLiteral("the event has an unreadable \"id\" or \"type\"")};
    event.provider = AgentProvider(*provider);
    event.type = *known;
    event.message = *message;
    return event;
}

Result<IncomingEvent> IncomingEvent::decode(const QByteArray& line)
{
    // Qt's parser is lenient about some broken sequences; the wire is not.
    if (!QUtf8StringView(line).isValidUtf8())
        return Failure{QStringLiteral("the line is not UTF-8")};
    const QJsonDocument document = QJsonDocument::fromJson(line);
    if (!document.isObject())
        return Failure{QStringLiteral("the line is not a JSON object")};
    const QJsonObject object = document.object();
    IncomingEvent event;
    const auto field = [&object](QLatin1String key, auto& into) { return read(object, key, into); };
    if (!field(QLatin1String("provider"), event.provider) || !field(QLatin1String("type"), event.type) ||
        !field(QLatin1String("message"), event.message) || !visitOptionalFields(event, field))
        return Failure{QStringLiteral("a field of the line has the wrong type")};
    return event;
}

AgentEvent IncomingEvent::toAgentEvent() const
{
    const auto filled = [](const std::optional<QString>& text) { return text && !text->isEmpty(); };
    AgentEvent event;
    event.provider = AgentProvider(filled(provider) ? *provider : QStringLiteral("claude"));
    // An unknown event of a newer helper shows the pet busy rather than being lost.
    event.type = agentEventType(type.value_or(QString())).value_or(AgentEventType::thinking);
    event.message = filled(message) ? *message : toolName.value_or(QLatin1String(""));
    event.command = command;
    event.toolName = toolName;
    event.say = say;
    event.phase = phase;
    event.cwd = cwd;
    event.sessionId = sessionId;
    event.exitCode = exitCode;
    return event;
}

} // namespace nibbo
