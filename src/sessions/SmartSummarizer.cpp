#include "sessions/SmartSummarizer.h"

#include "base/NibboLog.h"
#include "base/ThreadCheck.h"
#include "settings/SecretStore.h"
#include "settings/SettingsStore.h"
#include "settings/SettingsTexts.h"

#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>

#include <utility>

namespace nibbo {
namespace {

constexpr Milliseconds betweenRequests{4000};
constexpr qint64 answerLimit = 256 * 1024;
constexpr qsizetype wordsLimit = 6000;
constexpr qsizetype lineLimit = 200;
constexpr std::size_t sessionLimit = 2000;

/// What is meant for this machine goes there straight; everything else through the environment's proxy.
class EnvironmentProxies final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        const QString host = query.peerHostName();
        if (host == QLatin1String("localhost") || QHostAddress(host).isLoopback())
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        return systemProxyForQuery(query);
    }
};

QString instruction(AppLanguage language)
{
    return text(
        language,
        u"Sum up what the coding agent says in one plain line of at most 15 words, in English. "
        u"Answer with the line alone: no quotes, no markup.",
        u"用简体中文把编码 agent 说的话概括成一行，最多 30 个字。只回答这一行：不要引号，不要任何标记。");
}

QJsonObject message(const QString& role, const QString& content)
{
    return {{QStringLiteral("role"), role}, {QStringLiteral("content"), content}};
}

QJsonObject body(SummaryProvider provider, const QString& model, const QString& words, AppLanguage language)
{
    const QString user = QStringLiteral("user");
    if (provider == SummaryProvider::anthropic)
        return {{QStringLiteral("model"), model},
                {QStringLiteral("max_tokens"), 100},
                {QStringLiteral("system"), instruction(language)},
                {QStringLiteral("messages"), QJsonArray{message(user, words)}}};
    return {{QStringLiteral("model"), model},
            {QStringLiteral("max_tokens"), 100},
            {QStringLiteral("stream"), false},
            {QStringLiteral("messages"),
             QJsonArray{message(QStringLiteral("system"), instruction(language)), message(user, words)}}};
}

/// The model's text in an answer; empty when there is none.
QString lineIn(SummaryProvider provider, const QJsonObject& answer)
{
    QString line;
    if (provider == SummaryProvider::anthropic) {
        for (const QJsonValue& block : answer.value(QStringLiteral("content")).toArray()) {
            if (block[QStringLiteral("type")].toString() == QLatin1String("text")) {
                line = block[QStringLiteral("text")].toString();
                break;
            }
        }
    } else {
        line =
            answer.value(QStringLiteral("choices"))[0][QStringLiteral("message")][QStringLiteral("content")]
                .toString();
    }
    line = line.simplified();
    return line.size() > lineLimit ? line.left(lineLimit) + QChar(0x2026) : line;
}

/// What the provider itself says about its refusal.
QString errorIn(const QByteArray& content)
{
    const QJsonObject answer = QJsonDocument::fromJson(content).object();
    const QJsonValue error = answer.value(QStringLiteral("error"));
    const QString said = error.isString() ? error.toString() : error[QStringLiteral("message")].toString();
    return said.simplified().left(300);
}

} // namespace

SmartSummarizer::SmartSummarizer(const SettingsStore& settings, SecretStore& secrets, const Clock& clock,
                                 Scheduler& scheduler, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_secrets(secrets)
    , m_clock(clock)
    , m_scheduler(scheduler)
    , m_addressOf([&settings](SummaryProvider provider) { return settings.summaryBaseURL(provider); })
{
    m_network.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    m_network.setProxyFactory(new EnvironmentProxies);
}

SmartSummarizer::~SmartSummarizer() = default;

void SmartSummarizer::summarize(const QString& sessionKey, const QString& say,
                                const std::optional<QString>& detail)
{
    assertMainThread();
    if (!m_settings.current().smartSummary || say.trimmed().isEmpty())
        return;
    forgetOldSessions();
    m_sessions[sessionKey.toStdString()].next = Request{say, detail};
    pump(sessionKey);
}

void SmartSummarizer::pump(const QString& sessionKey)
{
    Session& session = m_sessions[sessionKey.toStdString()];
    if (session.isUnderWay || !session.next)
        return;
    const std::chrono::nanoseconds now = m_clock.now();
    const SummaryProvider provider = m_settings.current().summaryProvider;
    auto earliest = session.lastSent ? *session.lastSent + betweenRequests : now;
    earliest = std::max(earliest, std::chrono::nanoseconds(m_pausedUntilNs.value(provider, 0)));
    if (earliest > now) {
        session.wait = m_scheduler.after(std::chrono::ceil<Milliseconds>(earliest - now),
                                         [this, sessionKey] { pump(sessionKey); });
        return;
    }
    const Request request = *std::exchange(session.next, std::nullopt);
    // It may have been switched off while the words waited.
    if (!m_settings.current().smartSummary)
        return;
    session.lastSent = now;
    session.isUnderWay = true;
    withKey(provider, [this, sessionKey, provider, request](const Result<QString>& key) {
        const Answer done = [this, sessionKey, request](const Result<QString>& line) {
            m_sessions[sessionKey.toStdString()].isUnderWay = false;
            if (line) {
                m_lastLoggedError.clear();
                if (m_deliver)
                    m_deliver(sessionKey, *line, request.say);
            } else if (line.error() != m_lastLoggedError) {
                // The same trouble at every sentence would fill the log.
                m_lastLoggedError = line.error();
                NibboLog::log(QStringLiteral("summary: ") + line.error());
            }
            pump(sessionKey);
        };
        if (key)
            send(provider, *key, request, done);
        else
            done(key.failure());
    });
}

void SmartSummarizer::withKey(SummaryProvider provider, std::function<void(const Result<QString>&)> use)
{
    if (m_keys.contains(provider)) {
        use(m_keys.value(provider));
        return;
    }
    m_secrets.read(apiKeyName(rawValue(provider)), [this, provider, use = std::move(use),
                                                    guard = QPointer<SmartSummarizer>(this)](
                                                       const Result<std::optional<QString>>& found) {
        if (!guard)
            return;
        if (!found) {
            use(found.failure());
            return;
        }
        const QString key = found->value_or(QString()).trimmed();
        const bool needed = provider != SummaryProvider::custom;
        if (key.isEmpty() && needed) {
            use(Failure{text(m_settings.language(), u"There is no API key for %1 in the keyring.",
                             u"密钥环中没有 %1 的 API 密钥。")
                            .arg(title(provider, m_settings.language()))});
            return;
        }
        m_keys.insert(provider, key);
        use(key);
    });
}

void SmartSummarizer::send(SummaryProvider provider, const QString& key, const Request& request,
                           Answer answer)
{
    const AppLanguage language = m_settings.language();
    QString base = m_addressOf(provider);
    while (base.endsWith(QLatin1Char('/')))
        base.chop(1);
    const bool isAnthropic = provider == SummaryProvider::anthropic;
    const QUrl url(base +
                       (isAnthropic ? QStringLiteral("/v1/messages") : QStringLiteral("/chat/completions")),
                   QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() ||
        (url.scheme() != QLatin1String("https") && url.scheme() != QLatin1String("http"))) {
        answer(Failure{text(language, u"“%1” is not a web address.", u"“%1”不是有效的网址。").arg(base)});
        return;
    }
    QNetworkRequest web(url);
    web.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    if (isAnthropic) {
        web.setRawHeader("x-api-key", key.toUtf8());
        web.setRawHeader("anthropic-version", "2023-06-01");
    } else if (!key.isEmpty()) {
        web.setRawHeader("Authorization", "Bearer " + key.toUtf8());
    }
    QString words = request.say.left(wordsLimit);
    if (request.detail && !request.detail->isEmpty())
        words += QStringLiteral("\n\n[%1]").arg(request.detail->left(500));
    const QByteArray content =
        QJsonDocument(body(provider, m_settings.summaryModel(provider), words, language))
            .toJson(QJsonDocument::Compact);

    QNetworkReply* const reply = m_network.post(web, content);
    auto* const limit = new QTimer(reply);
    limit->setSingleShot(true);
    connect(limit, &QTimer::timeout, reply, [reply] {
        reply->setProperty("timedOut", true);
        reply->abort();
    });
    limit->start(m_timeout);
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
        if (received > answerLimit) {
            reply->setProperty("tooLarge", true);
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, provider, answer = std::move(answer)] {
        reply->deleteLater();
        finish(*reply, provider, reply->property("timedOut").toBool(), answer);
    });
}

void SmartSummarizer::finish(QNetworkReply& reply, SummaryProvider provider, bool timedOut,
                             const Answer& answer)
{
    const AppLanguage language = m_settings.language();
    const auto fail = [&answer](const QString& what) { answer(Failure{what}); };
    if (timedOut)
        return fail(
            text(language, u"The server did not answer within %1 seconds.", u"服务器在 %1 秒内没有回答。")
                .arg(std::chrono::duration_cast<std::chrono::seconds>(m_timeout).count()));
    if (reply.property("tooLarge").toBool())
        return fail(text(language, u"The server's answer is far too long.", u"服务器的回答过长。"));

    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray content = reply.read(answerLimit);
    if (status >= 300 && status < 400)
        return fail(text(language, u"The server sends elsewhere (HTTP %1); your key is not sent along.",
                         u"服务器要求跳转（HTTP %1）；不会把你的密钥一并发送过去。")
                        .arg(status));
    if (status >= 400) {
        if (status == 401 || status == 403)
            m_keys.remove(provider);
        if (status == 429) {
            bool isNumber = false;
            const int seconds = reply.rawHeader("Retry-After").trimmed().toInt(&isNumber);
            const auto pause = std::chrono::seconds(isNumber ? std::clamp(seconds, 1, 3600) : 30);
            m_pausedUntilNs.insert(provider, (m_clock.now() + pause).count());
        }
        const QString said = errorIn(content);
        return fail(text(language, u"The server refuses (HTTP %1): %2", u"服务器拒绝（HTTP %1）：%2")
                        .arg(status)
                        .arg(said.isEmpty()
                                 ? reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString()
                                 : said));
    }
    if (reply.error() != QNetworkReply::NoError)
        return fail(text(language, u"The server cannot be reached: %1", u"无法连接服务器：%1")
                        .arg(reply.errorString()));
    const QString line = lineIn(provider, QJsonDocument::fromJson(content).object());
    if (line.isEmpty())
        return fail(text(language, u"The server's answer holds no text.", u"服务器的回答中没有文字。"));
    answer(line);
}

void SmartSummarizer::test(std::function<void(const Result<QString>&)> answer)
{
    assertMainThread();
    const SummaryProvider provider = m_settings.current().summaryProvider;
    forgetKeys();
    withKey(provider, [this, provider, answer = std::move(answer)](const Result<QString>& key) {
        if (!key)
            answer(key);
        else
            send(provider, *key,
                 {QStringLiteral(
                      "I read the failing test, found that the date was parsed twice, and fixed the parser."),
                  std::nullopt},
                 answer);
    });
}

void SmartSummarizer::forgetOldSessions()
{
    if (m_sessions.size() < sessionLimit)
        return;
    const std::chrono::nanoseconds old = m_clock.now() - std::chrono::hours(1);
    std::erase_if(m_sessions, [old](const auto& entry) {
        const Session& session = entry.second;
        return !session.isUnderWay && !session.next && session.lastSent && *session.lastSent < old;
    });
}

} // namespace nibbo
