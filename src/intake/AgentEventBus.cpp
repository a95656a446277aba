#include "intake/AgentEventBus.h"

#include "agents/ProviderRegistry.h"
#include "approval/TrustEngine.h"
#include "base/NibboLog.h"
#include "base/ThreadCheck.h"
#include "sessions/AgentActivity.h"

#include <algorithm>
#include <utility>

namespace nibbo {
namespace {

constexpr Milliseconds detectionInterval{3000};

/// What the pet shows in place of a request that was decided without the user: a new event about the same
/// command in the same session.
AgentEvent decided(const AgentEvent& request, AgentEventType type, const QString& command)
{
    AgentEvent event;
    event.provider = request.provider;
    event.type = type;
    event.message = request.message;
    event.command = command;
    event.cwd = request.cwd;
    event.sessionId = request.sessionId;
    return event;
}

/// One event is one line: what an agent says must not pass for another entry.
QByteArray onOneLine(QString text)
{
    const auto breaksLine = [](QChar character) {
        const QChar::Category category = character.category();
        return category == QChar::Other_Control || category == QChar::Separator_Line ||
               category == QChar::Separator_Paragraph;
    };
    std::replace_if(text.begin(), text.end(), breaksLine, QLatin1Char(' '));
    return text.toUtf8();
}

bool isEnabled(const Settings& settings, const AgentProvider& provider)
{
    const ProviderSpec* spec = provider.spec();
    return settings.enabled.value(provider.rawValue(), spec && spec->confirmed);
}

} // namespace

AgentEventBus::AgentEventBus(AppPaths paths, SettingsSnapshot settings, ProcessList& processes,
                             const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_paths(std::move(paths))
    , m_settings(std::move(settings))
    , m_clock(clock)
    , m_systemLanguage(firstPreferredLanguage())
    , m_logFile(m_paths.agentLogFile())
    , m_detector(ExecutableFinder(m_paths.home()), processes,
                 [this](const AgentProvider& provider) { return isEnabled(*m_settings(), provider); })
    , m_socketServer(m_paths)
{}

AgentEventBus::~AgentEventBus()
{
    stop();
}

void AgentEventBus::start()
{
    assertMainThread();
    m_detector.onChange = [this](const AgentEvent& event) {
        forwardToPet(event);
        wakePet();
    };
    m_detector.onStatus = [this](const AgentProvider& provider, AgentStatus status) {
        QMetaObject::invokeMethod(
            this, [this, id = provider.rawValue(), status] { Q_EMIT statusDetected(id, status); },
            Qt::QueuedConnection);
    };
    m_detector.start(detectionInterval);
    m_socketServer.onEvent = [this](const AgentEvent& event, const LocalSocketServer::Responder& respond) {
        take(event, respond);
    };
    m_socketServer.onQuiet = [this] { settle(); };
    m_socketServer.start();
}

void AgentEventBus::stop()
{
    m_socketServer.stop();
    m_detector.stop();
    QHash<QUuid, LocalSocketServer::Responder> waiting;
    const std::lock_guard lock(m_lock);
    waiting.swap(m_approvalResponders);
}

void AgentEventBus::publish(const AgentEvent& event, const LocalSocketServer::Responder& onApproval)
{
    take(event, onApproval);
    settle();
}

void AgentEventBus::take(const AgentEvent& event, const LocalSocketServer::Responder& onApproval)
{
    const std::shared_ptr<const Settings> settings = m_settings();
    noteForLog(event, effectiveLanguage(settings->language, m_systemLanguage));
    if (event.type != AgentEventType::approvalRequired)
        return forwardToPet(event);
    const QString command = event.command.value_or(event.message);
    switch (TrustEngine::decide(command, settings->trustPolicy())) {
    case TrustEngine::Decision::allow: {
        if (onApproval)
            onApproval(true);
        AgentEvent work = decided(event, AgentEventType::coding, command);
        work.toolName = event.toolName;
        return forwardToPet(work);
    }
    case TrustEngine::Decision::block: {
        if (onApproval)
            onApproval(false);
        AgentEvent notice = decided(event, AgentEventType::riskyActionDetected, command);
        notice.message = QStringLiteral("Blocked: ") + command;
        return forwardToPet(notice);
    }
    case TrustEngine::Decision::ask:
        break;
    }
    if (onApproval) {
        const std::lock_guard lock(m_lock);
        m_approvalResponders.insert(event.id, onApproval);
    }
    forwardToPet(event);
}

void AgentEventBus::resolveApproval(const QUuid& eventId, bool allow)
{
    if (const auto respond = takeResponder(eventId))
        respond(allow);
}

void AgentEventBus::abandonApproval(const QUuid& eventId)
{
    // Destroying the last copy of a responder closes its connection.
    takeResponder(eventId);
}

LocalSocketServer::Responder AgentEventBus::takeResponder(const QUuid& eventId)
{
    const std::lock_guard lock(m_lock);
    return m_approvalResponders.take(eventId);
}

int AgentEventBus::waitingApprovals() const
{
    const std::lock_guard lock(m_lock);
    return static_cast<int>(m_approvalResponders.size());
}

void AgentEventBus::settle()
{
    if (!m_logLines.isEmpty())
        appendToPrivateFile(m_logFile, std::exchange(m_logLines, {}));
    wakePet();
}

void AgentEventBus::forwardToPet(const AgentEvent& event)
{
    const std::lock_guard lock(m_forwardedLock);
    m_forwarded.push_back(event);
}

void AgentEventBus::wakePet()
{
    QMetaObject::invokeMethod(this, &AgentEventBus::deliver, Qt::QueuedConnection);
}

void AgentEventBus::deliver()
{
    std::vector<AgentEvent> events;
    {
        const std::lock_guard lock(m_forwardedLock);
        events.swap(m_forwarded);
    }
    for (const AgentEvent& event : events) {
        m_lastEvent = event;
        Q_EMIT eventDelivered(event);
    }
}

void AgentEventBus::noteForLog(const AgentEvent& event, AppLanguage language)
{
    const QDateTime now = m_clock.wallNow();
    if (const qint64 second = now.toSecsSinceEpoch(); second != m_logSecond) {
        m_logSecond = second;
        m_logDate = now.toUTC().toString(QStringLiteral("[yyyy-MM-dd HH:mm:ss +0000] ")).toLatin1();
    }
    m_logLines.append(m_logDate);
    m_logLines.append(onOneLine(event.provider.displayName()));
    m_logLines.append(' ');
    m_logLines.append(rawValue(event.type).toLatin1());
    m_logLines.append(": ");
    m_logLines.append(onOneLine(AgentActivity::phrase(event, language)));
    m_logLines.append('\n');
}

} // namespace nibbo
