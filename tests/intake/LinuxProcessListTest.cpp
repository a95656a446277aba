// An executable of its own: starting a process leaves the thread sanitizer blind for the rest of a program.
#include "platform/linux/LinuxProcessList.h"

#include "support/Wait.h"

#include <QCoreApplication>
#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>

namespace nibbo {
namespace {

using test::waitFor;

TEST(LinuxProcessList, SeesARunningProcessWithItsArguments)
{
    const QString mark =
        QStringLiteral("nibbo test é ") + QString::number(QCoreApplication::applicationPid());
    QProcess process;
    process.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), QStringLiteral("read line"), QStringLiteral("name"), mark});
    ASSERT_TRUE(process.waitForStarted(30000));
    LinuxProcessList list;
    const auto find = [&] {
        const std::vector<RunningProcess> all = list.processes();
        const auto found = std::find_if(all.begin(), all.end(), [&process](const RunningProcess& candidate) {
            return candidate.id == process.processId();
        });
        return found == all.end() ? QString() : found->commandLine;
    };
    const QString expected = QStringLiteral("/bin/sh -c read line name ") + mark;
    // Between the fork and the exec the child still goes by our own command line.
    EXPECT_TRUE(waitFor([&] { return find() == expected; })) << find().toStdString();

    const std::vector<RunningProcess> all = list.processes();
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), [](const RunningProcess& candidate) {
        return candidate.id == QCoreApplication::applicationPid();
    }));
    EXPECT_TRUE(std::none_of(all.begin(), all.end(), [](const RunningProcess& candidate) {
        return candidate.commandLine.isEmpty() || candidate.commandLine.contains(QChar(u'\0'));
    }));

    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(30000));
    EXPECT_EQ(find(), QString());
}

} // namespace
} // namespace nibbo
