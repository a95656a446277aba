// What install, status and uninstall cost over all twelve agents, each against the least that could do the
// same to the same files in the same run: reading them for the status, reading and rewriting them for the
// others, once as it is and once written through to the disk.
//
// usage: HooksBenchmark [rounds, default 40]

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"
#include "base/Time.h"
#include "hooks/HookInstaller.h"
#include "hooks/PosixFileSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

using namespace nibbo;
using Steady = std::chrono::steady_clock;

/// The settings of somebody who has used the tool for a while: some ten kilobytes.
QByteArray settings()
{
    QByteArray content = "{\n  \"model\": \"opus\",\n  \"permissions\": {\n    \"allow\": [";
    for (int i = 0; i < 200; ++i)
        content += (i > 0 ? ",\n      " : "\n      ") + QByteArray("\"Bash(npm run task-") +
                   QByteArray::number(i) + ":*)\"";
    return content +
           "\n    ]\n  },\n  \"hooks\": {\n    \"Stop\": [{\"hooks\": [{\"type\": \"command\", \"command\": "
           "\"notify-send done\"}]}]\n  }\n}\n";
}

struct Home
{
    Home()
        : path(folder.filePath(QStringLiteral("home")))
        , log(folder.filePath(QStringLiteral("log")))
    {
        QDir().mkpath(path);
        NibboLog::setFile(log);
        for (const ProviderSpec& spec : ProviderRegistry::all())
            enabled[spec.id] = true;
        for (const ProviderSpec* spec : HookInstaller::specs()) {
            files.append(path + QLatin1Char('/') + spec->configRelativePath);
            write(files.last(), settings(), false);
        }
    }
    ~Home() { NibboLog::setFile({}); }

    HookInstaller installer()
    {
        return HookInstaller(
            {AppPaths(path), path + QStringLiteral("/prefix"), LauncherPlatform::linuxDesktop, enabled}, disk,
            clock);
    }
    static void write(const QString& file, const QByteArray& content, bool through)
    {
        QDir().mkpath(QFileInfo(file).path());
        const int descriptor = ::open(QFile::encodeName(file).constData(), O_WRONLY | O_CREAT, 0600);
        if (::write(descriptor, content.constData(), static_cast<std::size_t>(content.size())) !=
                content.size() ||
            ::ftruncate(descriptor, content.size()) != 0 || (through && ::fdatasync(descriptor) != 0))
            std::abort();
        ::close(descriptor);
    }
    static QByteArray read(const QString& file)
    {
        QFile opened(file);
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
    }
    void rewrite(bool through)
    {
        for (const QString& file : files)
            write(file, read(file), through);
    }

    QTemporaryDir folder;
    QString path;
    QString log;
    QStringList files;
    QMap<QString, bool> enabled;
    PosixFileSystem disk;
    SystemClock clock;
};

double milliseconds(const std::function<void()>& step)
{
    const Steady::time_point before = Steady::now();
    step();
    return std::chrono::duration<double, std::milli>(Steady::now() - before).count();
}

struct Row
{
    const char* name;
    /// The row that it is compared with; its own for a floor.
    int floor;
    std::vector<double> times;
};

void require(const Result<void>& result)
{
    if (result)
        return;
    std::fprintf(stderr, "%s\n", qUtf8Printable(result.error()));
    std::exit(1);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const int rounds = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 40;
    std::vector<Row> rows{
        {"read the files", 0, {}},    {"rewrite the files", 1, {}}, {"rewrite, written through", 2, {}},
        {"status, not wired", 0, {}}, {"install", 2, {}},           {"status, wired", 0, {}},
        {"install again", 1, {}},     {"ensureHealthy", 0, {}},     {"uninstall", 2, {}},
    };
    for (int round = 0; round < rounds; ++round) {
        Home home;
        const std::vector<std::function<void()>> steps{
            [&] {
                for (const QString& file : home.files)
                    Home::read(file);
            },
            [&] { home.rewrite(false); },
            [&] { home.rewrite(true); },
            [&] { home.installer().status(); },
            [&] { require(home.installer().install()); },
            [&] { home.installer().status(); },
            [&] { require(home.installer().install()); },
            [&] { home.installer().ensureHealthy(); },
            [&] { require(home.installer().uninstall()); },
        };
        for (std::size_t i = 0; i < steps.size(); ++i)
            rows[i].times.push_back(milliseconds(steps[i]));
    }
    std::printf("12 agents, %d files of %lld bytes that are shared with the user, %d rounds\n\n",
                static_cast<int>(HookInstaller::specs().size()), static_cast<long long>(settings().size()),
                rounds);
    std::printf("%-26s %10s %10s %14s  %s\n", "", "p50 ms", "p95 ms", "ratio (p50)", "to");
    for (Row& row : rows)
        std::sort(row.times.begin(), row.times.end());
    for (const Row& row : rows) {
        const Row& floor = rows[static_cast<std::size_t>(row.floor)];
        const std::size_t count = row.times.size();
        std::printf("%-26s %10.2f %10.2f %13.1fx  %s\n", row.name, row.times[count / 2],
                    row.times[count * 95 / 100], row.times[count / 2] / floor.times[count / 2], floor.name);
    }
    return 0;
}
