#include "intake/ExecutableFinder.h"

#include "base/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

class ExecutableFinderTest : public testing::Test
{
protected:
    QTemporaryDir scratch;
    QString home = scratch.filePath(QStringLiteral("home"));
    QString root = scratch.filePath(QStringLiteral("root"));
    ExecutableFinder finder{home, root};

    static void install(const QString& path, bool executable = true)
    {
        ASSERT_TRUE(writeAtomically(path, "#!/bin/sh\n"));
        QFile::Permissions mode = QFile::ReadOwner | QFile::WriteOwner;
        mode.setFlag(QFile::ExeOwner, executable);
        ASSERT_TRUE(QFile::setPermissions(path, mode));
    }
    std::string found() const
    {
        return finder.find(QStringLiteral("codex")).value_or(QString()).toStdString();
    }
};

TEST_F(ExecutableFinderTest, SearchesTheBestKnownPlacesFirst)
{
    // From the last place to the first: each new one is preferred to all before it.
    const QStringList places{
        home + QStringLiteral("/bin"),
        root + QStringLiteral("/snap/bin"),
        home + QStringLiteral("/.cargo/bin"),
        home + QStringLiteral("/.local/share/pnpm/bin"),
        home + QStringLiteral("/.local/share/pnpm"),
        home + QStringLiteral("/.bun/bin"),
        home + QStringLiteral("/.volta/bin"),
        home + QStringLiteral("/.fnm/node-versions/v20.1.0/installation/bin"),
        home + QStringLiteral("/.local/share/fnm/node-versions/v20.1.0/installation/bin"),
        home + QStringLiteral("/.nvm/versions/node/v20.1.0/bin"),
        root + QStringLiteral("/usr/bin"),
        root + QStringLiteral("/usr/local/bin"),
        root + QStringLiteral("/opt/homebrew/bin"),
        home + QStringLiteral("/.opencode/bin"),
        home + QStringLiteral("/.local/bin"),
        home + QStringLiteral("/.npm-global/bin"),
    };
    EXPECT_EQ(found(), "");
    for (const QString& place : places) {
        const QString path = place + QStringLiteral("/codex");
        install(path);
        EXPECT_EQ(found(), path.toStdString());
    }
    EXPECT_FALSE(finder.find(QStringLiteral("codexy")));
}

TEST_F(ExecutableFinderTest, PrefersTheNewestVersionOfNode)
{
    for (const char* version : {"v9.11.2", "v20.9.0", "v20.10.0", "v18.0.0"})
        install(home + QStringLiteral("/.nvm/versions/node/") + QString::fromLatin1(version) +
                QStringLiteral("/bin/codex"));
    EXPECT_EQ(found(), (home + QStringLiteral("/.nvm/versions/node/v20.10.0/bin/codex")).toStdString());
}

TEST_F(ExecutableFinderTest, TakesOnlyWhatCanBeExecuted)
{
    install(home + QStringLiteral("/.npm-global/bin/codex"), false);
    ASSERT_TRUE(QDir().mkpath(home + QStringLiteral("/.local/bin/codex")));
    ASSERT_TRUE(QDir().mkpath(home + QStringLiteral("/.opencode/bin")));
    ASSERT_TRUE(
        QFile::link(scratch.filePath(QStringLiteral("gone")), home + QStringLiteral("/.opencode/bin/codex")));
    EXPECT_EQ(found(), "");
    install(scratch.filePath(QStringLiteral("gone")));
    EXPECT_EQ(found(), (home + QStringLiteral("/.opencode/bin/codex")).toStdString())
        << "a link to a program is as good as the program";
}

} // namespace
} // namespace nibbo
