#include "app/LaunchOptions.h"
#include "app/SingleInstance.h"
#include "base/AppPaths.h"
#include "support/Wait.h"

#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace nibbo {
namespace {

TEST(LaunchOptions, isReadBeforeAnythingStarts)
{
    struct Row
    {
        QString line;
        LaunchMode mode;
        QString folder;
    };
    const auto s = [](const char16_t* text) { return QString::fromUtf16(text); };
    const std::vector<Row> rows{
        {s(u""), LaunchMode::pet, {}},
        {s(u"file.txt"), LaunchMode::pet, {}},
        {s(u"--install-hooks"), LaunchMode::hooks, {}},
        {s(u"--demo --hooks-status"), LaunchMode::hooks, {}},
        {s(u"--hooks"), LaunchMode::pet, {}},
        {s(u"--future-hooks-flag"), LaunchMode::pet, {}},
        {s(u"--hook"), LaunchMode::mistake, {}},
        {s(u"--doctor"), LaunchMode::doctor, {}},
        {s(u"--demo"), LaunchMode::demo, {}},
        {s(u"--demo --record /tmp/a"), LaunchMode::demo, s(u"/tmp/a")},
        {s(u"--record /tmp/a --demo"), LaunchMode::demo, s(u"/tmp/a")},
        {s(u"--record /tmp/a"), LaunchMode::mistake, {}},
        {s(u"--demo --record"), LaunchMode::mistake, {}},
        {s(u"--gallery out"), LaunchMode::gallery, s(u"out")},
        {s(u"--gallery --demo"), LaunchMode::mistake, {}},
        {s(u"--demo --doctor"), LaunchMode::mistake, {}},
        {s(u"-h"), LaunchMode::help, {}},
        {s(u"--version"), LaunchMode::version, {}},
        {s(u"--colour"), LaunchMode::mistake, {}},
    };
    for (const Row& row : rows) {
        const LaunchOptions parsed =
            LaunchOptions::parse(row.line.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        EXPECT_EQ(parsed.mode, row.mode) << row.line.toStdString();
        if (row.mode == LaunchMode::mistake)
            EXPECT_FALSE(parsed.mistake.isEmpty()) << row.line.toStdString();
        else
            EXPECT_EQ(parsed.folder, row.folder) << row.line.toStdString();
    }
}

TEST(SingleInstance, theSecondStartShowsTheFirst)
{
    const QTemporaryDir home;
    const AppPaths paths(home.path());
    auto first = std::make_unique<SingleInstance>(paths);
    ASSERT_EQ(first->claim(), SingleInstance::Role::first);
    int shown = 0;
    QObject::connect(first.get(), &SingleInstance::showRequested, first.get(), [&shown] { ++shown; });

    // The second one waits for the answer of the first, whose event loop is ours.
    std::atomic<int> role = -1;
    const std::unique_ptr<QThread> thread(QThread::create([&paths, &role] {
        SingleInstance second(paths);
        role = static_cast<int>(second.claim());
    }));
    thread->start();
    EXPECT_TRUE(test::waitFor([&role] { return role >= 0; }));
    thread->wait();
    EXPECT_EQ(role, static_cast<int>(SingleInstance::Role::second));
    EXPECT_EQ(shown, 1);

    first.reset();
    SingleInstance next(paths);
    EXPECT_EQ(next.claim(), SingleInstance::Role::first);
}

} // namespace
} // namespace nibbo
