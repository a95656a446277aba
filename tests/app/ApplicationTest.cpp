// The whole application on a private desktop: the real helper on one side, a real pointer on the other.
#include "app/Application.h"
#include "approval/CardGuard.h"
#include "pet/PetViewModel.h"
#include "pet/view/ApprovalCard.h"
#include "platform/linux/KeyringSecretStore.h"
#include "sessions/AgentSessionStore.h"
#include "support/ExpectWarning.h"
#include "support/Wait.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

using test::waitFor;

QString s(const char16_t* text)
{
    return QString::fromUtf16(text);
}

class ApplicationTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!qEnvironmentVariableIsSet("NIBBO_TEST_DESKTOP"))
            GTEST_SKIP() << "needs the private desktop";
    }

    std::unique_ptr<Application> make(Surroundings surroundings = Surroundings::real)
    {
        return std::make_unique<Application>(Application::Options{
            AppPaths(m_home.path()), surroundings, [this](const QString& step) { m_steps.append(step); }});
    }

    /// The helper, as an agent's hook starts it.
    std::unique_ptr<QProcess> hook(const QString& event, const QByteArray& payload)
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(s(u"HOME"), m_home.path());
        process->setProcessEnvironment(environment);
        process->start(s(u"" NIBBO_BUILD_DIR "/libexec/nibbo/nibbo-bridge"),
                       {s(u"--source"), s(u"claude"), s(u"--event"), event});
        process->write(payload);
        process->closeWriteChannel();
        return process;
    }

    void click(const QPoint& place)
    {
        QProcess pointer;
        pointer.start(s(u"xdotool"), {s(u"mousemove"), QString::number(place.x()), QString::number(place.y()),
                                      s(u"sleep"), s(u"0.2"), s(u"click"), s(u"1")});
        ASSERT_TRUE(waitFor([&pointer] { return pointer.state() == QProcess::NotRunning; }));
    }

    QTemporaryDir m_home;
    QStringList m_steps;
};

TEST_F(ApplicationTest, startsInOrderAndShowsTheSettingsOnce)
{
    auto application = make();
    application->start();
    const QStringList first{
        s(u"log"),           s(u"pet window"), s(u"settings window"), s(u"menu"),        s(u"hooks"),
        s(u"hook guardian"), s(u"event bus"),  s(u"agent detection"), s(u"status item"), s(u"first launch")};
    EXPECT_EQ(m_steps, first);
    const auto settingsShown = [] {
        const QWidgetList all = QApplication::topLevelWidgets();
        return std::any_of(all.begin(), all.end(), [](const QWidget* widget) {
            return widget->isVisible() && widget->windowTitle().contains(QStringLiteral("Nibbo Settings"));
        });
    };
    EXPECT_TRUE(waitFor(settingsShown));
    EXPECT_TRUE(QFile::exists(m_home.filePath(s(u".claude/settings.json"))))
        << "enabled agents are wired at start";
    application.reset();

    m_steps.clear();
    application = make();
    application->start();
    EXPECT_EQ(m_steps, first.mid(0, first.size() - 1));
    EXPECT_FALSE(settingsShown());
    application->showSettings();
    EXPECT_TRUE(waitFor(settingsShown));
}

TEST_F(ApplicationTest, theAnswerOnThePetReachesTheAgent)
{
    auto application = make(Surroundings::none);
    application->start();
    const auto* const card = application->petWindow().findChild<ApprovalCard*>();
    ASSERT_NE(card, nullptr);
    ASSERT_TRUE(waitFor([this] { return QFile::exists(AppPaths(m_home.path()).socketFile()); }));

    struct Row
    {
        CardButton button;
        const char* printed;
    };
    for (const Row& row : {Row{CardButton::deny, "deny"}, Row{CardButton::allow, "allow"}}) {
        const auto request = hook(s(u"PermissionRequest"),
                                  R"({"session_id":"s1","cwd":"/w","hook_event_name":"PermissionRequest",
                                      "tool_name":"Bash","tool_input":{"command":"make install"}})");
        // Live, and no longer growing: the place that is measured is the place that is pressed.
        QRect last;
        ASSERT_TRUE(waitFor([&] {
            if (!card->isVisible() || !card->isLive(row.button))
                return false;
            const QRect place(card->mapToGlobal(card->buttonRect(row.button).topLeft()),
                              card->buttonRect(row.button).size());
            return std::exchange(last, place) == place;
        }));
        EXPECT_EQ(application->pet().state(), PetState::waitingApproval);
        // A press that the window manager swallowed while the window grew is one that a person repeats.
        ASSERT_TRUE(waitFor([&] {
            if (request->state() == QProcess::NotRunning)
                return true;
            if (card->isVisible() && card->isLive(row.button))
                click(card->mapToGlobal(card->buttonRect(row.button).center()));
            return false;
        }));
        EXPECT_EQ(request->exitCode(), 0);
        EXPECT_TRUE(request->readAllStandardOutput().contains(QByteArray("\"") + row.printed + "\""));
        EXPECT_TRUE(request->readAllStandardError().isEmpty());
    }
    EXPECT_EQ(application->settings().current().approvalMode, ApprovalMode::manual);
}

TEST_F(ApplicationTest, aLaterEventTakesTheCardAwayAndAnApplicationThatEndsLetsTheAgentGo)
{
    auto application = make(Surroundings::none);
    application->start();
    ASSERT_TRUE(waitFor([this] { return QFile::exists(AppPaths(m_home.path()).socketFile()); }));
    const QByteArray payload = R"({"session_id":"s1","cwd":"/w","hook_event_name":"PermissionRequest",
                                   "tool_name":"Bash","tool_input":{"command":"make"}})";
    const auto waits = [&application] { return application->pet().state() == PetState::waitingApproval; };
    const auto answered = hook(s(u"PermissionRequest"), payload);
    ASSERT_TRUE(waitFor(waits));
    const auto prompt = hook(s(u"UserPromptSubmit"),
                             R"({"session_id":"s1","hook_event_name":"UserPromptSubmit","prompt":"go on"})");
    ASSERT_TRUE(waitFor([&] { return answered->state() == QProcess::NotRunning; }));
    EXPECT_TRUE(answered->readAllStandardOutput().isEmpty()) << "nobody decided, so nothing is decided";
    EXPECT_FALSE(waits());
    ASSERT_TRUE(waitFor([&] { return prompt->state() == QProcess::NotRunning; }));

    const auto left = hook(s(u"PermissionRequest"), payload);
    ASSERT_TRUE(waitFor(waits));
    application.reset();
    ASSERT_TRUE(waitFor([&] { return left->state() == QProcess::NotRunning; }));
    EXPECT_EQ(left->exitCode(), 0);
    EXPECT_TRUE(left->readAllStandardOutput().isEmpty());
}

TEST_F(ApplicationTest, theStatusItemFindsAStatusBarThatComesLater)
{
    auto application = make();
    application->start();
    QProcess bar;
    bar.start(s(u"/usr/bin/python3"), {s(u"" NIBBO_SOURCE_DIR "/tests/support/status-bar.py")});
    EXPECT_TRUE(waitFor([&bar] { return bar.bytesAvailable() > 0; }));
    EXPECT_TRUE(bar.readAllStandardOutput().startsWith("item "));
    application.reset();
    bar.kill();
    bar.waitForFinished();
}

TEST_F(ApplicationTest, theRealProgramIsOnePerDisplayAndEndsCleanly)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(s(u"HOME"), m_home.path());
    environment.insert(s(u"XDG_CONFIG_HOME"), m_home.filePath(s(u".config")));
    const QString program = s(u"" NIBBO_BUILD_DIR "/bin/nibbo");
    QProcess first;
    first.setProcessEnvironment(environment);
    first.start(program, QStringList());
    ASSERT_TRUE(waitFor([this] { return QFile::exists(AppPaths(m_home.path()).socketFile()); }));
    QProcess second;
    second.setProcessEnvironment(environment);
    second.start(program, QStringList());
    ASSERT_TRUE(waitFor([&second] { return second.state() == QProcess::NotRunning; }));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(second.readAllStandardOutput().contains("runs already"));
    ASSERT_EQ(first.state(), QProcess::Running);
    first.terminate();
    ASSERT_TRUE(waitFor([&first] { return first.state() == QProcess::NotRunning; }));
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
    EXPECT_TRUE(first.readAllStandardError().isEmpty());
}

TEST_F(ApplicationTest, keysAreKeptByTheKeyringAlone)
{
    if (QStandardPaths::findExecutable(s(u"gnome-keyring-daemon")).isEmpty())
        GTEST_SKIP() << "gnome-keyring is not installed";
    KeyringSecretStore store;
    std::optional<QString> answer;
    const auto read = [&store, &answer] {
        answer.reset();
        store.read(s(u"test"), [&answer](const Result<std::optional<QString>>& found) {
            answer = found ? found->value_or(s(u"(none)")) : s(u"error: ") + found.error();
        });
        EXPECT_TRUE(waitFor([&answer] { return answer.has_value(); }));
        return answer.value_or(QString());
    };
    EXPECT_TRUE(read().startsWith(s(u"error: No keyring")));

    QProcess daemon;
    daemon.start(s(u"gnome-keyring-daemon"),
                 {s(u"--foreground"), s(u"--unlock"), s(u"--components=secrets")});
    daemon.write("test-password");
    daemon.closeWriteChannel();
    // It takes the service's name when it is ready.
    ASSERT_TRUE(waitFor([&read] { return read() == s(u"(none)"); }));
    std::optional<bool> done;
    const auto note = [&done](const Result<void>& result) { done = static_cast<bool>(result); };
    store.write(s(u"test"), s(u"schlüssel"), note);
    ASSERT_TRUE(waitFor([&done] { return done.has_value(); }));
    EXPECT_TRUE(*done);
    EXPECT_EQ(read(), s(u"schlüssel"));
    done.reset();
    store.remove(s(u"test"), note);
    ASSERT_TRUE(waitFor([&done] { return done.has_value(); }));
    EXPECT_EQ(read(), s(u"(none)"));
    daemon.terminate();
    EXPECT_TRUE(waitFor([&daemon] { return daemon.state() == QProcess::NotRunning; }));
}

} // namespace
} // namespace nibbo
