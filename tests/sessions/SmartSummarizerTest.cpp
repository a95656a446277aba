#include "sessions/SmartSummarizer.h"

#include "settings/SecretStore.h"
#include "settings/SettingsStore.h"
#include "support/ManualTime.h"
#include "support/Wait.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

using test::waitFor;

/// A provider that answers each request with the next of its answers, and with silence when it has none left.
class StandInProvider final : public QTcpServer
{
public:
    std::deque<QByteArray> answers;
    QByteArrayList requests;

    StandInProvider()
    {
        EXPECT_TRUE(listen(QHostAddress::LocalHost));
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* const socket = nextPendingConnection())
                serve(socket);
        });
    }

    QString address() const { return QStringLiteral("http://127.0.0.1:%1").arg(serverPort()); }
    QJsonObject lastBody() const
    {
        const QByteArray& request = requests.last();
        return QJsonDocument::fromJson(request.mid(request.indexOf("\r\n\r\n") + 4)).object();
    }

private:
    void serve(QTcpSocket* socket)
    {
        auto received = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, received] {
            *received += socket->readAll();
            const qsizetype head = received->indexOf("\r\n\r\n");
            const qsizetype length = received->toLower().indexOf("content-length:");
            if (head < 0 || length < 0)
                return;
            const qsizetype wanted =
                received->mid(length + 15, received->indexOf("\r\n", length) - length - 15).trimmed().toInt();
            if (received->size() < head + 4 + wanted)
                return;
            requests.append(*received);
            if (answers.empty())
                return;
            socket->write(answers.front());
            answers.pop_front();
            socket->disconnectFromHost();
        });
    }
};

QByteArray http(const QByteArray& status, const QByteArray& body, const QByteArray& headers = {})
{
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body;
}

const QByteArray chatAnswer = R"({"choices":[{"message":{"role":"assistant","content":" One\n line "}}]})";
const QByteArray messagesAnswer = R"({"content":[{"type":"thinking"},{"type":"text","text":"One line"}]})";

class OneKey final : public SecretStore
{
public:
    std::optional<QString> key = QStringLiteral("secret-key");
    int reads = 0;
    void read(const QString&, Read answer) override
    {
        ++reads;
        answer(key);
    }
    void write(const QString&, const QString&, Done answer) override { answer({}); }
    void remove(const QString&, Done answer) override { answer({}); }
};

class SmartSummarizerTest : public ::testing::Test
{
protected:
    SmartSummarizerTest()
        : m_defaults(m_folder.filePath(QStringLiteral("defaults.json")))
        , m_settings(m_defaults)
        , m_summarizer(m_settings, m_secrets, m_time, m_time)
    {
        m_settings.change([](Settings& settings) {
            settings.smartSummary = true;
            settings.summaryProvider = SummaryProvider::custom;
            settings.language = AppLanguage::en;
        });
        m_summarizer.setAddressOf([this](SummaryProvider) { return m_provider.address(); });
        m_summarizer.setDeliver([this](const QString& session, const QString& line, const QString& say) {
            m_delivered.append(session + QLatin1Char('|') + line + QLatin1Char('|') + say);
        });
    }

    void ask(const char16_t* session, const char16_t* say)
    {
        m_summarizer.summarize(QString::fromUtf16(session), QString::fromUtf16(say), std::nullopt);
    }

    /// The error that the user is shown, or "ok: " and the line.
    QString tested()
    {
        std::optional<QString> outcome;
        m_summarizer.test([&outcome](const Result<QString>& line) {
            outcome = line ? QStringLiteral("ok: ") + *line : line.error();
        });
        EXPECT_TRUE(waitFor([&outcome] { return outcome.has_value(); }));
        return outcome.value_or(QString());
    }

    QTemporaryDir m_folder;
    UserDefaults m_defaults;
    SettingsStore m_settings;
    OneKey m_secrets;
    test::ManualTime m_time;
    StandInProvider m_provider;
    SmartSummarizer m_summarizer;
    QStringList m_delivered;
};

TEST_F(SmartSummarizerTest, speaksBothProtocols)
{
    m_provider.answers = {http("200 OK", chatAnswer), http("200 OK", messagesAnswer)};
    ask(u"claude:1", u"I did it.");
    ASSERT_TRUE(waitFor([this] { return m_delivered.size() == 1; }));
    EXPECT_EQ(m_delivered.last(), QStringLiteral("claude:1|One line|I did it."));
    EXPECT_TRUE(m_provider.requests.last().startsWith("POST /chat/completions "));
    EXPECT_TRUE(m_provider.requests.last().contains("Bearer secret-key"));

    m_settings.change([](Settings& settings) {
        settings.summaryProvider = SummaryProvider::anthropic;
        settings.language = AppLanguage::zh;
    });
    ask(u"claude:2", u"Done.");
    ASSERT_TRUE(waitFor([this] { return m_delivered.size() == 2; }));
    EXPECT_TRUE(m_provider.requests.last().startsWith("POST /v1/messages "));
    EXPECT_TRUE(m_provider.requests.last().toLower().contains("x-api-key: secret-key"));
    EXPECT_EQ(m_provider.lastBody().value(QStringLiteral("model")).toString(),
              defaultSummaryModel(SummaryProvider::anthropic));
    EXPECT_TRUE(
        m_provider.lastBody().value(QStringLiteral("system")).toString().contains(QStringLiteral("中文")));
}

TEST_F(SmartSummarizerTest, sendsNothingWhileItIsOffOrThereIsNothingToSay)
{
    ask(u"claude:1", u"  \n ");
    m_settings.change([](Settings& settings) { settings.smartSummary = false; });
    ask(u"claude:1", u"Words.");
    m_time.advance(Seconds(60));
    EXPECT_EQ(m_secrets.reads, 0);
    EXPECT_TRUE(m_provider.requests.isEmpty());
}

TEST_F(SmartSummarizerTest, newestWordsWinAtOneRequestInFourSeconds)
{
    m_provider.answers = {http("200 OK", chatAnswer), http("200 OK", chatAnswer), http("200 OK", chatAnswer)};
    ask(u"claude:1", u"first");
    ask(u"claude:1", u"second");
    ask(u"claude:1", u"third");
    ASSERT_TRUE(waitFor([this] { return m_delivered.size() == 1; }));
    m_time.advance(Seconds(3.9));
    EXPECT_EQ(m_provider.requests.size(), 1);
    ask(u"codex:1", u"another session waits for nobody");
    ASSERT_TRUE(waitFor([this] { return m_delivered.size() == 2; }));
    m_time.advance(Seconds(0.2));
    ASSERT_TRUE(waitFor([this] { return m_delivered.size() == 3; }));
    EXPECT_TRUE(m_delivered.last().endsWith(QStringLiteral("|third")));
    EXPECT_EQ(m_time.waiting(), 0);
}

TEST_F(SmartSummarizerTest, saysWhatWentWrong)
{
    struct Row
    {
        const char* name;
        QByteArray answer;
        const char16_t* said;
    };
    const std::vector<Row> rows{
        {"good", http("200 OK", chatAnswer), u"ok: One line"},
        {"key refused", http("401 Unauthorized", R"({"error":{"message":"invalid key"}})"), u"invalid key"},
        {"plain error", http("500 Internal Server Error", "<html>"), u"HTTP 500"},
        {"error as text", http("400 Bad Request", R"({"error":"no such model"})"), u"no such model"},
        {"garbage", http("200 OK", "\xff\xfe{{{"), u"holds no text"},
        {"other shape", http("200 OK", R"({"choices":"x"})"), u"holds no text"},
        {"huge", http("200 OK", QByteArray(2 * 1024 * 1024, 'x')), u"too long"},
        {"redirect", http("302 Found", "", "Location: http://127.0.0.1:1/\r\n"), u"sends elsewhere"},
        {"hung up", "", u"cannot be reached"},
    };
    for (const Row& row : rows) {
        // Qt asks again when a connection ends without a word.
        m_provider.answers = std::deque<QByteArray>(row.answer.isEmpty() ? 8 : 1, row.answer);
        const QString said = tested();
        EXPECT_TRUE(said.contains(QStringView(row.said))) << row.name << ": " << said.toStdString();
        EXPECT_FALSE(said.contains(QStringLiteral("secret-key")));
    }
    m_summarizer.setTimeout(Milliseconds(50));
    m_provider.answers.clear();
    EXPECT_TRUE(tested().contains(QStringLiteral("did not answer")));
    m_summarizer.setTimeout(Milliseconds(20'000));

    // What speaks no TLS where TLS is asked for.
    m_summarizer.setAddressOf([this](SummaryProvider) {
        return QStringLiteral("https://127.0.0.1:%1").arg(m_provider.serverPort());
    });
    QTcpServer plain;
    ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
    QObject::connect(&plain, &QTcpServer::newConnection, &plain, [&plain] {
        QTcpSocket* const socket = plain.nextPendingConnection();
        socket->write("hello, this is no TLS at all\r\n");
        socket->disconnectFromHost();
    });
    m_summarizer.setAddressOf(
        [&plain](SummaryProvider) { return QStringLiteral("https://127.0.0.1:%1").arg(plain.serverPort()); });
    EXPECT_TRUE(tested().contains(QStringLiteral("cannot be reached")));

    m_summarizer.setAddressOf([](SummaryProvider) { return QStringLiteral("file:///etc/passwd"); });
    EXPECT_TRUE(tested().contains(QStringLiteral("not a web address")));

    m_settings.change([](Settings& settings) { settings.summaryProvider = SummaryProvider::openai; });
    m_secrets.key.reset();
    EXPECT_TRUE(tested().contains(QStringLiteral("no API key for OpenAI")));
}

TEST_F(SmartSummarizerTest, aProviderThatAsksForAPauseGetsIt)
{
    m_provider.answers = {http("429 Too Many Requests", "{}", "Retry-After: 60\r\n"),
                          http("200 OK", chatAnswer)};
    ask(u"claude:1", u"first");
    ask(u"claude:1", u"second");
    ASSERT_TRUE(waitFor([this] { return m_time.waiting() > 0; }));
    m_time.advance(Seconds(59));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_provider.requests.size(), 1);
    m_time.advance(Seconds(2));
    ASSERT_TRUE(waitFor([this] { return m_delivered.size() == 1; }));
}

} // namespace
} // namespace nibbo
