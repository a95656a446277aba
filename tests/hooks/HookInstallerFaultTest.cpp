// A disk that refuses and a process that dies, at every single operation of an install and of an uninstall.
#include "FaultyFileSystem.h"
#include "ScratchHome.h"

#include <array>
#include <functional>
#include <tuple>

namespace nibbo::test {
namespace {

using Fault = FaultyFileSystem::Fault;

const std::array<std::pair<const char*, QByteArray>, 3> usersFiles{{
    {"claude", R"({"model": "opus", "hooks": {"Stop": [{"hooks": [{"command": "mine"}]}]}, "n": 1.10})"},
    // Longer than what is made of it, so that a file that was cut short would show.
    {"codex", "not understood " + QByteArray("x").repeated(6000)},
    {"cursor", "// with comments\n{\"version\": 3, \"list\": [1, 2, 3,],}\n"},
}};

struct Case
{
    const char* name;
    Fault fault;
};
constexpr std::array<Case, 4> faults{{
    {"fails", Fault::fails},
    {"fails from then on", Fault::failsFromThenOn},
    {"killed before", Fault::killedBefore},
    {"killed half-way", Fault::killedHalfWay},
}};

enum class Command
{
    install,
    uninstall
};

Result<void> run(HookInstaller installer, Command command)
{
    return command == Command::install ? installer.install() : installer.uninstall();
}

void setUp(ScratchHome& home)
{
    home.enableOnly({QStringLiteral("claude"), QStringLiteral("codex"), QStringLiteral("cursor"),
                     QStringLiteral("copilot"), QStringLiteral("opencode"), QStringLiteral("cline")});
    for (const auto& [id, content] : usersFiles)
        home.write(id, content);
}

/// What each file holds once the install is through.
std::array<QByteArray, 3> wiredContents(ScratchHome& home)
{
    std::array<QByteArray, 3> result;
    for (std::size_t i = 0; i < usersFiles.size(); ++i)
        result[i] = home.read(usersFiles[i].first);
    return result;
}

void expectNoBackupLost(ScratchHome& home)
{
    const QList<QByteArray> kept = home.backupContents();
    for (const auto& [id, content] : usersFiles)
        EXPECT_TRUE(home.read(id) == content || kept.contains(content))
            << id << ": the user's content is gone";
}

class HookInstallerFaultTest : public ::testing::TestWithParam<std::tuple<Case, Command, Command>>
{};

TEST_P(HookInstallerFaultTest, leavesEveryFileWholeForTheNextCommand)
{
    const auto& [faultCase, command, next] = GetParam();
    const bool kills = faultCase.fault == Fault::killedBefore || faultCase.fault == Fault::killedHalfWay;
    int at = 0;
    for (bool reached = true; reached; ++at) {
        SCOPED_TRACE("operation " + std::to_string(at));
        ASSERT_LT(at, 1000);
        ScratchHome home;
        setUp(home);
        // The commands embed the home, so that what is expected is made here too.
        ASSERT_OK(home.installer().install());
        const std::array<QByteArray, 3> wired = wiredContents(home);
        if (command == Command::install) {
            ASSERT_OK(home.installer().uninstall());
            ASSERT_TRUE(QDir(home.backupsPath()).removeRecursively());
            home.time.advance(Seconds(60));
        }

        FaultyFileSystem disk(faultCase.fault, at);
        bool killed = false;
        try {
            const Result<void> result = run(home.installer(disk), command);
            reached = disk.reached();
            EXPECT_TRUE(result || result.error().contains(home.home)) << qUtf8Printable(result.error());
            for (const auto& [id, isWired] : home.installer().status().toStdMap()) {
                const bool wanted = command == Command::install && home.enabled.value(id);
                EXPECT_TRUE(!result || isWired == wanted) << "says OK, but not so: " << qUtf8Printable(id);
            }
            if (faultCase.fault == Fault::fails) {
                for (std::size_t i = 0; i < usersFiles.size(); ++i) {
                    const QByteArray now = home.read(usersFiles[i].first);
                    EXPECT_TRUE(now == usersFiles[i].second || now == wired[i]) << usersFiles[i].first;
                }
            }
        } catch (const Killed&) {
            killed = true;
        }
        EXPECT_EQ(killed, kills && reached);
        expectNoBackupLost(home);

        ASSERT_OK(run(home.installer(), next));
        for (std::size_t i = 0; i < usersFiles.size(); ++i)
            EXPECT_EQ(home.read(usersFiles[i].first),
                      next == Command::install ? wired[i] : usersFiles[i].second)
                << usersFiles[i].first;
        for (const auto& [id, isWired] : home.installer().status().toStdMap())
            EXPECT_EQ(isWired, next == Command::install && home.enabled.value(id)) << qUtf8Printable(id);
        expectNoBackupLost(home);

        ASSERT_OK(home.installer().uninstall());
        for (const auto& [id, content] : usersFiles)
            EXPECT_EQ(home.read(id), content) << id;
        if (::testing::Test::HasFailure())
            return;
    }
    EXPECT_GT(at, 15);
}

std::string faultName(const ::testing::TestParamInfo<HookInstallerFaultTest::ParamType>& info)
{
    std::string name = std::get<0>(info.param).name;
    name += std::get<1>(info.param) == Command::install ? "_install" : "_uninstall";
    name += std::get<2>(info.param) == Command::install ? "_then_install" : "_then_uninstall";
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, HookInstallerFaultTest,
                         ::testing::Combine(::testing::ValuesIn(faults),
                                            ::testing::Values(Command::install, Command::uninstall),
                                            ::testing::Values(Command::install, Command::uninstall)),
                         faultName);

} // namespace
} // namespace nibbo::test
