#include "app/Doctor.h"

#include "agents/ProviderRegistry.h"
#include "app/DoctorAdvice.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QLocalSocket>
#include <QProcess>

#include <csignal>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

namespace nibbo {
namespace {

constexpr qint64 logTail = 4LL * 1024 * 1024;
constexpr qsizetype longestVersion = 60;

/// A program that may hang, or leave children that do: it leads a process group, which is killed as one.
class BoundedProcess final
{
public:
    BoundedProcess(const QString& program, const QStringList& arguments, const QByteArray& input = {})
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setChildProcessModifier([] { ::setsid(); });
        m_process.start(program, arguments);
        if (!input.isEmpty())
            m_process.write(input);
        m_process.closeWriteChannel();
    }
    ~BoundedProcess()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        if (m_process.processId() > 0)
            ::kill(-static_cast<pid_t>(m_process.processId()), SIGKILL);
        m_process.kill();
        m_process.waitForFinished(1000);
    }
    BoundedProcess(const BoundedProcess&) = delete;
    BoundedProcess& operator=(const BoundedProcess&) = delete;

    /// False when it did not run or did not end by itself in time.
    bool ended(qint64 limitMs)
    {
        return (m_process.state() == QProcess::NotRunning ||
                m_process.waitForFinished(static_cast<int>(std::max<qint64>(limitMs, 1)))) &&
               m_process.error() == QProcess::UnknownError && m_process.exitStatus() == QProcess::NormalExit;
    }
    int exitCode() const { return m_process.exitCode(); }
    QByteArray output() { return m_process.readAll(); }

private:
    QProcess m_process;
};

/// One short line of what a foreign program printed, without anything that a terminal obeys.
QString tidied(const QByteArray& output)
{
    QString line = QString::fromUtf8(output).trimmed().section(QLatin1Char('\n'), 0, 0).left(longestVersion);
    line.removeIf([](QChar c) { return !c.isPrint(); });
    return line.trimmed();
}

} // namespace

QHash<QString, QString> lastEvents(const QString& logFile)
{
    QHash<QString, QString> result;
    QFile file(logFile);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    file.seek(std::max<qint64>(0, file.size() - logTail));
    for (const QByteArray& line : file.readAll().split('\n')) {
        const qsizetype end = line.indexOf("] ");
        if (!line.startsWith('[') || end < 0)
            continue;
        const QString rest = QString::fromUtf8(line.mid(end + 2));
        for (const ProviderSpec& spec : ProviderRegistry::all()) {
            if (rest.startsWith(spec.title + QLatin1Char(' ')))
                result.insert(spec.title, QString::fromUtf8(line.mid(1, end - 1)));
        }
    }
    return result;
}

Doctor::Doctor(HookEnvironment environment, FileSystem& files, const Clock& clock, ExecutableFinder finder,
               Limits limits)
    : m_environment(environment)
    , m_files(files)
    , m_installer(std::move(environment), files, clock)
    , m_finder(std::move(finder))
    , m_limits(limits)
{}

QStringList Doctor::agents() const
{
    struct Found
    {
        const ProviderSpec& spec;
        QString path;
        std::unique_ptr<BoundedProcess> version;
    };
    std::vector<Found> all;
    QElapsedTimer timer;
    timer.start();
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        Found found{spec, {}, nullptr};
        for (const QString& name : spec.executableNames) {
            if (const auto path = m_finder.find(name); path && found.path.isEmpty())
                found.path = *path;
        }
        if (!found.path.isEmpty())
            found.version =
                std::make_unique<BoundedProcess>(found.path, QStringList{QStringLiteral("--version")});
        all.push_back(std::move(found));
    }

    const QMap<QString, bool> wired = m_installer.status();
    const QHash<QString, QString> events = lastEvents(m_environment.paths.agentLogFile());
    QStringList lines;
    for (const Found& found : all) {
        const ProviderSpec& spec = found.spec;
        QStringList parts;
        if (found.path.isEmpty()) {
            parts.append(QStringLiteral("not found"));
        } else {
            const bool ended = found.version->ended(m_limits.version.count() - timer.elapsed());
            const QString version = ended ? tidied(found.version->output()) : QString();
            parts.append(QStringLiteral("found at %1, %2")
                             .arg(found.path, version.isEmpty() ? QStringLiteral("tells no version")
                                                                : QStringLiteral("version ") + version));
        }
        const bool enabled = m_installer.isEnabled(spec);
        parts.append(enabled ? QStringLiteral("enabled") : QStringLiteral("disabled"));
        parts.append(wired.value(spec.id) ? QStringLiteral("wired") : QStringLiteral("not wired"));
        const QString last = events.value(spec.title);
        parts.append(last.isEmpty() ? QStringLiteral("no event yet") : QStringLiteral("last event ") + last);
        QString line = spec.title + QStringLiteral(": ") + parts.join(QStringLiteral("; "));
        if (enabled && !found.path.isEmpty()) {
            const QString advice = wired.value(spec.id) ? adviceFor(spec, m_environment.paths.home(), m_files)
                                                        : QStringLiteral("run nibbo --install-hooks");
            if (!advice.isEmpty())
                line += QStringLiteral(" -- ") + advice;
        }
        lines.append(line);
    }
    return lines;
}

QString Doctor::launcherTest() const
{
    const QString launcher =
        m_environment.paths.home() + QLatin1Char('/') + QLatin1String(launcherRelativePath);
    if (!m_files.facts(launcher))
        return QStringLiteral("self-test: there is no launcher at %1: run nibbo --install-hooks")
            .arg(launcher);
    QElapsedTimer timer;
    timer.start();
    // An event of no agent's: the whole way is gone, and nothing is told to the pet.
    BoundedProcess run(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), bridgeCommand({m_environment.paths.home(), {}, m_environment.platform},
                                             QStringLiteral("claude"), QStringLiteral("Doctor"))},
        "{\"session_id\":\"doctor\",\"hook_event_name\":\"Doctor\"}\n");
    if (!run.ended(m_limits.launcher.count()))
        return QStringLiteral("self-test: the launcher did not end within %1 s")
            .arg(m_limits.launcher.count() / 1000);
    const double elapsed = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    if (run.exitCode() != 0)
        return QStringLiteral(
                   "self-test: the launcher ended with status %1, agents may take that for a refusal")
            .arg(run.exitCode());
    return QStringLiteral("self-test: the launcher took %1 ms").arg(elapsed, 0, 'f', 1);
}

QString Doctor::applicationTest() const
{
    QElapsedTimer timer;
    timer.start();
    const int limit = static_cast<int>(m_limits.answer.count());
    QLocalSocket socket;
    socket.connectToServer(m_environment.paths.socketFile());
    if (!socket.waitForConnected(limit))
        return QStringLiteral("self-test: the application does not run: start nibbo");
    // A line that is no event is answered, and nothing comes of it.
    socket.write("doctor\n");
    QByteArray answer;
    while (!answer.contains('\n') && timer.elapsed() < limit && socket.waitForReadyRead(limit))
        answer += socket.readAll();
    if (!answer.contains("\"ok\""))
        return QStringLiteral("self-test: the application did not answer within %1 s").arg(limit / 1000);
    return QStringLiteral("self-test: the application answered after %1 ms")
        .arg(static_cast<double>(timer.nsecsElapsed()) / 1e6, 0, 'f', 1);
}

QStringList Doctor::selfTest() const
{
    return {launcherTest(), applicationTest()};
}

void Doctor::print(std::ostream& out) const
{
    for (const QString& line : agents() + selfTest())
        out << line.toStdString() << std::endl;
}

} // namespace nibbo
