#pragma once

#include "base/Result.h"
#include "base/Time.h"
#include "sessions/AgentSummarizer.h"
#include "settings/Settings.h"

#include <QHash>
#include <QNetworkAccessManager>
#include <QObject>

#include <memory>
#include <string>
#include <unordered_map>

class QNetworkReply;

namespace nibbo {

class SecretStore;
class SettingsStore;

/// Sums up by a model provider of the user's choice, with the user's own key from the keyring. Nothing is
/// sent while `smartSummary` is off. At most one request per 4 s and session; of what comes in between, the
/// newest words win. It follows no redirect, since the key would go along. Keys are never logged. Main
/// thread.
class SmartSummarizer final : public QObject, public AgentSummarizer
{
    Q_OBJECT
public:
    /// All must outlive it.
    SmartSummarizer(const SettingsStore& settings, SecretStore& secrets, const Clock& clock,
                    Scheduler& scheduler, QObject* parent = nullptr);
    ~SmartSummarizer() override;

    void summarize(const QString& sessionKey, const QString& say,
                   const std::optional<QString>& detail) override;
    void setDeliver(Deliver deliver) override { m_deliver = std::move(deliver); }

    /// A key was changed: the next request reads it anew.
    void forgetKeys() { m_keys.clear(); }
    /// One request with the present choice of provider, whether or not summaries are on: the model's own
    /// line, or the real error in words for the user.
    void test(std::function<void(const Result<QString>&)> answer);

    /// What counts as an answer that takes too long.
    void setTimeout(Milliseconds timeout) { m_timeout = timeout; }
    /// Where a provider is spoken to; the settings' address unless told otherwise.
    void setAddressOf(std::function<QString(SummaryProvider)> addressOf)
    {
        m_addressOf = std::move(addressOf);
    }

private:
    struct Request
    {
        QString say;
        std::optional<QString> detail;
    };
    struct Session
    {
        std::optional<std::chrono::nanoseconds> lastSent;
        std::optional<Request> next;
        bool isUnderWay = false;
        ScheduledHandle wait;
    };
    using Answer = std::function<void(const Result<QString>&)>;

    void pump(const QString& sessionKey);
    void withKey(SummaryProvider provider, std::function<void(const Result<QString>&)> use);
    void send(SummaryProvider provider, const QString& key, const Request& request, Answer answer);
    void finish(QNetworkReply& reply, SummaryProvider provider, bool timedOut, const Answer& answer);
    void forgetOldSessions();

    const SettingsStore& m_settings;
    SecretStore& m_secrets;
    const Clock& m_clock;
    Scheduler& m_scheduler;
    QNetworkAccessManager m_network;
    Deliver m_deliver;
    std::function<QString(SummaryProvider)> m_addressOf;
    Milliseconds m_timeout{20'000};
    QHash<SummaryProvider, QString> m_keys;
    std::unordered_map<std::string, Session> m_sessions;
    /// A provider that asked for a pause gets it.
    QHash<SummaryProvider, qint64> m_pausedUntilNs;
    QString m_lastLoggedError;
};

} // namespace nibbo
