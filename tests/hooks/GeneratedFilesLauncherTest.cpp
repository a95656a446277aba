#include "hooks/GeneratedFiles.h"

#include "agents/ProviderRegistry.h"
#include "hooks/GeneratedFilesSupport.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

using test::awkwardNames;
using test::builtCleaner;
using test::hookTestsFolder;
using test::Outcome;
using test::read;
using test::run;
using test::write;

enum class Shell
{
    dash,
    bash,
    zsh
};

const char* nameOf(Shell shell)
{
    return shell == Shell::dash ? "dash" : shell == Shell::bash ? "bash" : "zsh";
}

// A home of its own with the launcher in it. Time and tools come from the environment: on Linux from a folder
// at the front of PATH; zsh reads functions in the tools' full names from ZDOTDIR. `log` gets a line from
// every tool.
class LauncherWorld final
{
public:
    LauncherWorld(Shell shell, const QString& homeName)
        : m_shell(shell)
        , home(m_scratch.filePath(homeName))
    {
        isMac = shell == Shell::zsh;
        QDir().mkpath(home);
        prefix = m_scratch.filePath(isMac ? QStringLiteral("pre fix/Nibbo.app") : QStringLiteral("pre fix"));
        context = {home, prefix, isMac ? LauncherPlatform::macOs : LauncherPlatform::linuxDesktop};
        write(launcher(), launcherScript(context), QFile::ExeOwner);
        if (!isMac) {
            const QString cleaner = home + QLatin1Char('/') + QLatin1String(cleanerRelativePath);
            EXPECT_TRUE(QFile::copy(builtCleaner, cleaner));
        }
        writeTools();
    }

    QString launcher() const { return home + QLatin1Char('/') + QLatin1String(launcherRelativePath); }
    QString cache() const { return home + QStringLiteral("/.nibbo/bin/.bridge-cache"); }
    QString stamp() const { return home + QStringLiteral("/.nibbo/.orphaned"); }
    QString helperIn(const QString& place) const
    {
        return place + (isMac ? QStringLiteral("/Contents/Helpers/nibbo-bridge")
                              : QStringLiteral("/libexec/nibbo/nibbo-bridge"));
    }
    QString homePlace() const
    {
        return home + (isMac ? QStringLiteral("/Applications/Nibbo.app") : QStringLiteral("/.local"));
    }
    QString otherPlace(const char* name) const
    {
        return m_scratch.filePath(QLatin1String(name) + (isMac ? QStringLiteral(".app") : QString()));
    }

    void putHelper(const QString& place) const
    {
        write(helperIn(place),
              "#!/bin/sh\nprintf '%s\\n' \"$0\"\nfor a in \"$@\"; do printf '<%s>\\n' \"$a\"; "
              "done\ncat\nexit 7\n",
              QFile::ExeOwner);
    }
    // What the look-up will say; the application may not be there any more.
    void putLookUp(const QString& place) const
    {
        if (isMac) {
            write(m_scratch.filePath(QStringLiteral("found")), place.toUtf8() + "\n/second/Nibbo.app\n");
            return;
        }
        write(place + QStringLiteral("/bin/nibbo"), "#!/bin/sh\n", QFile::ExeOwner);
        QFile::link(place + QStringLiteral("/bin/nibbo"), tools() + QStringLiteral("/nibbo"));
    }
    void setNow(const QByteArray& seconds) const
    {
        write(m_scratch.filePath(QStringLiteral("now")), seconds);
    }
    QByteArray log() const { return read(m_scratch.filePath(QStringLiteral("log"))).value_or(QByteArray()); }

    Outcome runLauncher(const QStringList& arguments = {}, const QByteArray& input = {},
                        const std::optional<QString>& homeVariable = std::nullopt) const
    {
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("HOME"), homeVariable.value_or(home));
        environment.insert(QStringLiteral("PATH"), tools() + QStringLiteral(":/usr/bin:/bin"));
        environment.insert(QStringLiteral("ZDOTDIR"), tools());
        environment.insert(QStringLiteral("SCRATCH"), m_scratch.path());
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        QStringList all(launcher());
        if (m_shell == Shell::bash)
            all.prepend(QStringLiteral("--posix"));
        return run(QLatin1String(nameOf(m_shell)), all + arguments, input, environment);
    }

private:
    Shell m_shell;
    QTemporaryDir m_scratch;

    QString tools() const { return m_scratch.filePath(QStringLiteral("tools")); }
    void writeTools() const
    {
        setNow("1700000000");
        const auto tool = [this](const char* name, const QByteArray& body) {
            write(tools() + QLatin1Char('/') + QLatin1String(name),
                  "#!/bin/sh\necho " + QByteArray(name) + " >>\"$SCRATCH/log\"\n" + body, QFile::ExeOwner);
        };
        if (!isMac) {
            tool("date", "[ \"$*\" = +%s ] && cat \"$SCRATCH/now\"\n");
            tool("rm", "exec /bin/rm \"$@\"\n");
            return;
        }
        write(tools() + QStringLiteral("/.zshenv"),
              "function /bin/date { echo date >>$SCRATCH/log; [ \"$*\" = +%s ] && cat $SCRATCH/now; }\n"
              "function /bin/rm { echo rm >>$SCRATCH/log; command rm \"$@\"; }\n"
              "function /usr/bin/mdfind { echo mdfind >>$SCRATCH/log; echo noise >&2; [ ! -e $SCRATCH/found "
              "] || cat $SCRATCH/found; }\n"
              "function /usr/bin/osascript { echo osascript \"$@\" >>$SCRATCH/log; node '" +
                  hookTestsFolder.toUtf8() + "jxa-stand-in.mjs'; }\n");
    }

public:
    bool isMac = false;
    QString home;
    QString prefix;
    GeneratedFilesContext context;
};

class LauncherTest : public ::testing::TestWithParam<Shell>
{
protected:
    // Whatever is left of it after five minutes without the application.
    static void expectSilence(const Outcome& outcome)
    {
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, QByteArray());
        EXPECT_EQ(outcome.error, QByteArray());
    }
    static void expectHelper(const LauncherWorld& world, const Outcome& outcome, const QString& place)
    {
        EXPECT_EQ(outcome.status, 7) << outcome.error.toStdString();
        EXPECT_EQ(outcome.out.split('\n').first(), world.helperIn(place).toUtf8());
        EXPECT_EQ(outcome.error, QByteArray());
        EXPECT_FALSE(QFileInfo::exists(world.stamp()));
    }
};

INSTANTIATE_TEST_SUITE_P(Shells, LauncherTest, ::testing::Values(Shell::dash, Shell::bash, Shell::zsh),
                         [](const auto& instance) { return std::string(nameOf(instance.param)); });

TEST_P(LauncherTest, BecomesTheHelperWithArgumentsAndInputAsTheyAre)
{
    for (const QString& name : awkwardNames) {
        SCOPED_TRACE(name.toStdString());
        const LauncherWorld world(GetParam(), name);
        world.putHelper(world.prefix);
        world.putHelper(world.homePlace());
        const Outcome outcome = world.runLauncher(
            {QStringLiteral("--source"), QStringLiteral("a b"), QString(), QStringLiteral("$x'*")},
            "{\"payload\": \"\\u00fc\"}");
        expectHelper(world, outcome, world.prefix);
        EXPECT_EQ(outcome.out, world.helperIn(world.prefix).toUtf8() +
                                   "\n<--source>\n<a b>\n<>\n<$x'*>\n{\"payload\": \"\\u00fc\"}");
        EXPECT_EQ(world.log(), QByteArray()) << "a tool was started on the way that every hook takes";
    }
}

TEST_P(LauncherTest, FindsTheApplicationInTheUsersOwnPlace)
{
    for (const QString& name : awkwardNames) {
        SCOPED_TRACE(name.toStdString());
        const LauncherWorld world(GetParam(), name);
        world.putHelper(world.homePlace());
        write(world.stamp(), "1\n"); // long overdue, and yet it is only moved
        expectHelper(world, world.runLauncher(), world.homePlace());
        EXPECT_EQ(world.log(), QByteArray("rm\n"));
    }
}

TEST_P(LauncherTest, RemembersWhereTheLookUpFoundIt)
{
    const LauncherWorld world(GetParam(), QStringLiteral("with space"));
    const QString place = world.otherPlace("else where");
    world.putHelper(place);
    world.putLookUp(place);
    write(world.stamp(), "1\n");
    expectHelper(world, world.runLauncher(), place);
    EXPECT_EQ(read(world.cache()), place.toUtf8() + '\n');

    // From now on nothing is looked up, also when the look-up would fail or the stamp comes back.
    world.putLookUp(world.otherPlace("nowhere"));
    const QByteArray before = world.log();
    expectHelper(world, world.runLauncher(), place);
    EXPECT_EQ(world.log(), before);
    write(world.stamp(), "1\n");
    expectHelper(world, world.runLauncher(), place);
    EXPECT_EQ(world.log(), before + "rm\n");
}

TEST_P(LauncherTest, LooksAgainWhenTheCacheIsStale)
{
    for (const QByteArray& stale : {QByteArray("/gone\n"), QByteArray(), QByteArray("\n"),
                                    QByteArray("relative"), QByteArray("\0\xff*\n", 4)}) {
        SCOPED_TRACE(stale.toStdString());
        const LauncherWorld world(GetParam(), QStringLiteral("plain"));
        const QString place = world.otherPlace("new");
        world.putHelper(place);
        world.putLookUp(place);
        write(world.cache(), stale);
        expectHelper(world, world.runLauncher(), place);
        EXPECT_EQ(read(world.cache()), place.toUtf8() + '\n');
    }
}

TEST_P(LauncherTest, PassesOverWhatIsNoHelper)
{
    const LauncherWorld world(GetParam(), QStringLiteral("plain"));
    write(world.helperIn(world.prefix), "not executable");
    QDir().mkpath(world.helperIn(world.homePlace()));
    QDir().mkpath(world.cache());
    world.putLookUp(world.otherPlace("empty"));
    expectSilence(world.runLauncher({QStringLiteral("--source"), QStringLiteral("claude")}, "{}"));
    EXPECT_EQ(read(world.stamp()), QByteArray("1700000000\n"));
    EXPECT_TRUE(QFileInfo(world.cache()).isDir());
}

TEST_P(LauncherTest, ReadsTheStampAndWaitsFiveMinutes)
{
    enum class Then
    {
        stampStays,
        stampIsNow,
        allIsGone
    };
    struct Row
    {
        const char* stamp; // null: none
        const char* now;
        Then then;
    };
    const Row rows[] = {
        {nullptr, "1700000000", Then::stampIsNow},
        {"1700000000\n", "1700000000", Then::stampStays},
        {"1700000000\n", "1700000299", Then::stampStays},
        {"1700000000\n", "1700000300", Then::allIsGone},
        {"1700000000", "1700000300", Then::allIsGone},
        {"1700000000\n", "1800000000", Then::allIsGone},
        {"0\n", "1700000000", Then::allIsGone},
        {"0099\n", "1700000000", Then::allIsGone},
        {"1700000001\n", "1700000000", Then::stampIsNow}, // the clock was set back
        {"", "1700000000", Then::stampIsNow},
        {"soon\n", "1700000000", Then::stampIsNow},
        {"-5\n", "1700000000", Then::stampIsNow},
        {"99999999999999999999999\n", "1700000000", Then::stampIsNow},
        {"$(touch hacked)\n", "1700000000", Then::stampIsNow},
        {"1700000000\n", "", Then::stampStays}, // no clock
        {"1700000000\n", "broken", Then::stampStays},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.stamp != nullptr ? row.stamp : "none") + " at " + row.now);
        const LauncherWorld world(GetParam(), QStringLiteral("with space"));
        if (row.stamp != nullptr)
            write(world.stamp(), row.stamp);
        world.setNow(row.now);
        expectSilence(world.runLauncher({}, "{}"));
        EXPECT_EQ(QFileInfo::exists(world.home + QStringLiteral("/.nibbo")), row.then != Then::allIsGone);
        if (row.then == Then::stampStays) {
            EXPECT_EQ(read(world.stamp()), QByteArray(row.stamp));
        } else if (row.then == Then::stampIsNow) {
            EXPECT_EQ(read(world.stamp()), QByteArray(row.now) + '\n');
        }
    }
}

TEST_P(LauncherTest, TakesEveryTraceAwayWhateverTheHomeIsCalled)
{
    for (const QString& name : awkwardNames) {
        SCOPED_TRACE(name.toStdString());
        const LauncherWorld world(GetParam(), name);
        QStringList owned;
        QStringList shared;
        for (const ProviderSpec& spec : ProviderRegistry::all()) {
            const QString path = world.home + QLatin1Char('/') + spec.configRelativePath;
            const QByteArray command =
                nlohmann::json(bridgeCommand(world.context, spec.id, QStringLiteral("X")).toStdString())
                    .dump()
                    .c_str();
            switch (spec.mechanism) {
            case HookMechanism::claudeHooks:
                shared += path;
                write(path, "{\"hooks\":{\"X\":[{\"hooks\":[{\"command\":" + command + "}]}]},\"mine\":1}");
                break;
            case HookMechanism::cursorHooks:
                shared += path;
                write(path, "{\"hooks\":{\"X\":[{\"command\":" + command + "}]},\"mine\":1}");
                break;
            case HookMechanism::copilotFile:
                write(path, copilotHooks(world.context));
                owned += path;
                break;
            case HookMechanism::jsPlugin:
                write(path, openCodePlugin(world.context));
                owned += path;
                break;
            case HookMechanism::scriptDir:
                for (const QString& event : spec.events) {
                    write(path + QLatin1Char('/') + event, clineScript(world.context, event));
                    owned += path + QLatin1Char('/') + event;
                }
                break;
            }
        }
        ASSERT_EQ(shared.size() + owned.size(), 9 + 2 + 6);
        write(world.stamp(), "1699999700\n");
        expectSilence(world.runLauncher());
        for (const QString& path : shared)
            EXPECT_EQ(read(path), QByteArray("{\n  \"mine\": 1\n}\n")) << path.toStdString();
        for (const QString& path : owned)
            EXPECT_FALSE(QFileInfo::exists(path)) << path.toStdString();
        EXPECT_FALSE(QFileInfo::exists(world.home + QStringLiteral("/.nibbo")));
        if (!world.isMac)
            continue;
        EXPECT_TRUE(world.log().contains("osascript -l JavaScript\n"));
    }
}

TEST_P(LauncherTest, UsesTheHomeOfTheInstallWhereTheEnvironmentHasNone)
{
    for (const char* variable : {"", "relative/path"}) {
        const LauncherWorld world(GetParam(), QStringLiteral("o'brien"));
        world.putHelper(world.homePlace());
        expectHelper(world, world.runLauncher({}, {}, QLatin1String(variable)), world.homePlace());
    }
}

TEST(LinuxLauncherTest, StaysWhileAHookNamesItOrNobodyCanCleanUp)
{
    struct Row
    {
        const char* name;
        const char* settings;
        bool hasCleaner;
    };
    const Row rows[] = {
        {"commented settings",
         "// mine\n{\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"nibbo-bridge\"}]}]}}", true},
        {"an entry among others",
         "{\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"nibbo-bridge\"},{\"command\":\"b\"}]}]}}", true},
        {"no cleaner", "{\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"nibbo-bridge\"}]}]}}", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const LauncherWorld world(Shell::dash, QStringLiteral("plain"));
        const QString settings = world.home + QStringLiteral("/.gemini/settings.json");
        write(settings, row.settings);
        if (!row.hasCleaner)
            QFile::remove(world.home + QLatin1Char('/') + QLatin1String(cleanerRelativePath));
        write(world.stamp(), "1\n");
        const Outcome outcome = world.runLauncher();
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out + outcome.error, QByteArray());
        EXPECT_EQ(read(settings), QByteArray(row.settings));
        EXPECT_TRUE(QFileInfo::exists(world.launcher()));
    }
}

TEST(LinuxLauncherTest, EndsWellWhereTheHelperCannotRun)
{
    const LauncherWorld world(Shell::dash, QStringLiteral("plain"));
    write(world.helperIn(world.prefix), "#!/no/such/interpreter\n", QFile::ExeOwner);
    EXPECT_EQ(world.runLauncher().status, 0);
}

// The places outside of the home directory can be had only where the kernel gives a mount table of one's own.
TEST(LinuxLauncherTest, FindsTheApplicationInEveryFixedPlace)
{
    const QString unshare = QStringLiteral("unshare");
    const QStringList own = {QStringLiteral("--user"), QStringLiteral("--map-root-user"),
                             QStringLiteral("--mount")};
    const QByteArray mounts =
        "for d in /usr/local /usr/libexec /opt; do mount -t tmpfs none $d || exit 99; done\n";
    if (run(unshare, own + QStringList{QStringLiteral("sh")}, mounts).status != 0)
        GTEST_SKIP() << "no mount table of one's own";
    const LauncherWorld world(Shell::dash, QStringLiteral("plain"));
    world.putHelper(world.homePlace());
    // From the last place to the first: each one put there takes precedence over the one before.
    QByteArray script = mounts;
    QByteArray expected;
    for (const char* place : {"/opt/nibbo", "/usr", "/usr/local"}) {
        const QByteArray folder = QByteArray(place) + "/libexec/nibbo";
        script += "mkdir -p " + folder + " && printf '#!/bin/sh\\necho $0\\n' >" + folder +
                  "/nibbo-bridge && chmod +x " + folder + "/nibbo-bridge\nHOME=" + world.home.toUtf8() +
                  " dash " + world.launcher().toUtf8() + "\n";
        expected += folder + "/nibbo-bridge\n";
    }
    const Outcome outcome = run(unshare, own + QStringList{QStringLiteral("sh")}, script);
    EXPECT_EQ(outcome.out, expected) << outcome.error.toStdString();
}

} // namespace
} // namespace nibbo
