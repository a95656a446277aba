#include "hooks/HookInstaller.h"

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"
#include "hooks/HookBackups.h"
#include "hooks/HookWriter.h"
#include "hooks/SafeWriter.h"
#include "hooks/SharedHooksWriter.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace nibbo {
namespace {

constexpr std::chrono::seconds lockLimit(20);

bool isShared(const ProviderSpec& spec)
{
    return spec.mechanism == HookMechanism::claudeHooks || spec.mechanism == HookMechanism::cursorHooks;
}

GeneratedFilesContext generatedContext(const HookEnvironment& environment)
{
    return {environment.paths.home(), environment.installPrefix, environment.platform};
}

QString removalMark(const AppPaths& paths)
{
    return paths.applicationSupport() + QStringLiteral("/hooks-removed");
}

/// What one operation works with. `begin` takes the lock and finishes what an interrupted operation left.
class Operation final
{
public:
    Operation(const HookEnvironment& environment, FileSystem& files, const Clock& clock)
        : m_environment(environment)
        , m_generated(generatedContext(environment))
        , m_files(files)
        , m_support(environment.paths.applicationSupport())
        , m_writer(files, m_support + QStringLiteral("/HookJournal"))
        , m_backups(files, m_writer, clock, environment.paths.backupsDirectory())
        , m_scope{m_generated, files, m_writer, m_backups}
    {}

    Result<void> begin()
    {
        Result<std::unique_ptr<FileLock>> lock =
            m_files.lock(m_support + QStringLiteral("/hooks.lock"), lockLimit);
        if (!lock)
            return lock.failure();
        m_lock = std::move(lock).value();
        return m_writer.recover();
    }

    HookWriter& writerOf(const ProviderSpec& spec)
    {
        std::unique_ptr<HookWriter>& writer = m_writers[spec.mechanism];
        if (!writer)
            writer = HookWriter::make(spec.mechanism, m_scope);
        return *writer;
    }

    SharedHooksWriter& sharedWriterOf(const ProviderSpec& spec)
    {
        return static_cast<SharedHooksWriter&>(writerOf(spec));
    }

    Result<void> writeLauncher()
    {
        const QString home = m_environment.paths.home() + QLatin1Char('/');
        if (Result<void> launcher = m_writer.replace(home + QLatin1String(launcherRelativePath),
                                                     launcherScript(m_generated), 0755);
            !launcher)
            return launcher;
        return m_environment.platform == LauncherPlatform::linuxDesktop
                   ? copyCleaner(home + QLatin1String(cleanerRelativePath))
                   : Result<void>();
    }

    Result<void> markRemoved() { return m_writer.replace(removalMark(m_environment.paths), {}, 0600); }
    Result<void> unmarkRemoved()
    {
        const QString mark = removalMark(m_environment.paths);
        return m_files.facts(mark) ? m_writer.remove(mark) : Result<void>();
    }

    using Step = std::function<Result<void>(const ProviderSpec&)>;
    using Failures = std::map<const ProviderSpec*, QString>;

    /// Writes what is staged, and says for which providers that failed. Tools write their files whenever they
    /// like: where one came in between, `again` takes up its new content.
    Failures commit(const Step& again)
    {
        Failures failures;
        for (int attempt = 0;; ++attempt) {
            const SafeWriter::Outcome outcome = m_writer.commit();
            for (auto failed = outcome.failed.begin(); failed != outcome.failed.end(); ++failed)
                failures[providerAt(failed.key())] = failed.value();
            if (outcome.overtaken.isEmpty())
                return failures;
            for (const QString& path : outcome.overtaken) {
                const ProviderSpec* const spec = providerAt(path);
                if (attempt == mostAttempts)
                    failures[spec] =
                        QStringLiteral("cannot write %1: another program keeps writing it").arg(path);
                else if (Result<void> staged = again(*spec); !staged)
                    failures[spec] = staged.error();
            }
            if (attempt == mostAttempts)
                return failures;
        }
    }

    HookBackups& backups() { return m_backups; }
    SafeWriter& writer() { return m_writer; }
    const HookScope& scope() const { return m_scope; }

private:
    static constexpr int mostAttempts = 5;

    /// Only providers' files are staged.
    const ProviderSpec* providerAt(const QString& path) const
    {
        const auto& all = ProviderRegistry::all();
        return &*std::find_if(all.begin(), all.end(),
                              [&](const ProviderSpec& spec) { return m_scope.path(spec) == path; });
    }

    /// The cleaner must be there when the application is not, so it lives beside the launcher.
    Result<void> copyCleaner(const QString& target)
    {
        const QString source = m_environment.installPrefix + QStringLiteral("/libexec/nibbo/nibbo-cleaner");
        if (!m_files.facts(source)) {
            NibboLog::log(QStringLiteral("hook install: no cleaner at ") + source);
            return {};
        }
        const Result<QByteArray> content = m_files.read(source);
        if (!content)
            return content.failure();
        return m_writer.replace(target, *content, 0755);
    }

    const HookEnvironment& m_environment;
    GeneratedFilesContext m_generated;
    FileSystem& m_files;
    QString m_support;
    SafeWriter m_writer;
    HookBackups m_backups;
    HookScope m_scope;
    std::map<HookMechanism, std::unique_ptr<HookWriter>> m_writers;
    std::unique_ptr<FileLock> m_lock;
};

void logFailure(const char* what, const QString& error)
{
    NibboLog::log(QLatin1String(what) + error);
}

/// Puts the bridge into the enabled providers, up to the first that does not let us.
Result<void> wireEnabled(Operation& operation, const HookInstaller& installer)
{
    const Operation::Step install = [&operation](const ProviderSpec& spec) {
        return operation.writerOf(spec).install(spec);
    };
    Result<void> first;
    std::vector<const ProviderSpec*> done;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (!installer.isEnabled(spec))
            continue;
        first = install(spec);
        if (!first)
            break;
        done.push_back(&spec);
    }
    const Operation::Failures failures = operation.commit(install);
    for (const ProviderSpec* const spec : done) {
        if (const auto failed = failures.find(spec); failed == failures.end())
            NibboLog::log(
                QStringLiteral("hook install: %1 -> %2").arg(spec->title, operation.scope().path(*spec)));
        else if (first)
            first = Failure{failed->second};
    }
    return first;
}

void unwireDisabled(Operation& operation, const HookInstaller& installer)
{
    const Operation::Step remove = [&operation](const ProviderSpec& spec) {
        return operation.writerOf(spec).remove(spec);
    };
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (installer.isEnabled(spec))
            continue;
        if (Result<void> removed = remove(spec); !removed)
            logFailure("hook install: ", removed.error());
    }
    for (const auto& failed : operation.commit(remove))
        logFailure("hook install: ", failed.second);
}

Result<void> installInto(Operation& operation, const HookInstaller& installer)
{
    if (Result<void> unmarked = operation.unmarkRemoved(); !unmarked)
        return unmarked;
    if (Result<void> launcher = operation.writeLauncher(); !launcher)
        return launcher;
    if (Result<void> begun = operation.backups().begin(); !begun)
        return begun;
    if (Result<void> wired = wireEnabled(operation, installer); !wired)
        return wired;
    unwireDisabled(operation, installer);
    if (Result<void> noted = operation.backups().makeLatest(); !noted)
        logFailure("hook install: ", noted.error());
    return {};
}

} // namespace

HookInstaller::HookInstaller(HookEnvironment environment, FileSystem& files, const Clock& clock)
    : m_environment(std::move(environment))
    , m_files(files)
    , m_clock(clock)
{}

bool HookInstaller::isEnabled(const ProviderSpec& spec) const
{
    return m_environment.enabled.value(spec.id.toLower(), spec.confirmed);
}

std::vector<const ProviderSpec*> HookInstaller::specs()
{
    std::vector<const ProviderSpec*> result;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (isShared(spec))
            result.push_back(&spec);
    }
    return result;
}

Result<void> HookInstaller::install()
{
    Operation operation(m_environment, m_files, m_clock);
    if (Result<void> begun = operation.begin(); !begun)
        return begun;
    return installInto(operation, *this);
}

Result<void> HookInstaller::uninstall()
{
    Operation operation(m_environment, m_files, m_clock);
    if (Result<void> begun = operation.begin(); !begun)
        return begun;
    Result<void> first;
    const auto note = [&first](const Result<void>& result) {
        if (result)
            return;
        logFailure("hook uninstall: ", result.error());
        if (first)
            first = result;
    };
    // First, so that a guardian that sees the files change does not put the hooks back.
    note(operation.markRemoved());
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (!isShared(spec))
            note(operation.writerOf(spec).remove(spec));
    }
    // A set is gone back to once: what was written after that is newer than the set.
    const std::optional<QString> latest = operation.backups().latest();
    const bool goBack = latest && !operation.backups().isRestored(*latest);
    const Operation::Step takeOut = [&](const ProviderSpec& spec) {
        SharedHooksWriter& writer = operation.sharedWriterOf(spec);
        return goBack ? writer.restore(spec, *latest) : writer.remove(spec);
    };
    for (const ProviderSpec* const spec : specs())
        note(takeOut(*spec));
    for (const auto& failed : operation.commit(takeOut))
        note(Failure{failed.second});
    for (const ProviderSpec* const spec : specs()) {
        if (goBack && m_files.facts(operation.backups().pathIn(*latest, *spec)))
            NibboLog::log(QStringLiteral("hook restore: %1 from backup %2").arg(spec->title, *latest));
    }
    if (goBack && first)
        note(operation.backups().markRestored(*latest));
    return first;
}

bool HookInstaller::isRemoved() const
{
    return m_files.facts(removalMark(m_environment.paths)).has_value();
}

QMap<QString, bool> HookInstaller::status() const
{
    // Reading needs no lock and makes nothing: a torn file counts as not wired.
    Operation operation(m_environment, m_files, m_clock);
    QMap<QString, bool> result;
    for (const ProviderSpec& spec : ProviderRegistry::all())
        result.insert(spec.id, operation.writerOf(spec).isWired(spec));
    return result;
}

HookHealth HookInstaller::ensureHealthy(Removed removed)
{
    const auto failed = [](const QString& error) {
        NibboLog::log(QStringLiteral("hook ensure: repair FAILED: ") + error);
        return HookHealth::failed;
    };
    Operation operation(m_environment, m_files, m_clock);
    if (Result<void> begun = operation.begin(); !begun)
        return failed(begun.error());
    if (removed == Removed::leaveOut && isRemoved())
        return HookHealth::healthy;
    if (Result<void> launcher = operation.writeLauncher(); !launcher)
        NibboLog::log(QStringLiteral("hook ensure: ") + launcher.error());
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (!isEnabled(spec) || operation.writerOf(spec).isWired(spec))
            continue;
        if (Result<void> installed = installInto(operation, *this); !installed)
            return failed(installed.error());
        NibboLog::log(QStringLiteral("hook ensure: repaired stale/missing hooks"));
        return HookHealth::repaired;
    }
    NibboLog::log(QStringLiteral("hook ensure: healthy, no action"));
    return HookHealth::healthy;
}

QStringList HookInstaller::watchedConfigFiles() const
{
    QStringList result;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        const QString path = m_environment.paths.home() + QLatin1Char('/') + spec.configRelativePath;
        if (isEnabled(spec) && spec.mechanism != HookMechanism::scriptDir && m_files.facts(path))
            result.append(path);
    }
    return result;
}

std::vector<HookBackup> HookInstaller::backups() const
{
    Operation operation(m_environment, m_files, m_clock);
    const HookBackups& stored = operation.backups();
    std::vector<HookBackup> result;
    for (const QString& set : stored.sets()) {
        for (const ProviderSpec& spec : ProviderRegistry::all()) {
            const QString path = stored.pathIn(set, spec);
            if (const auto known = m_files.facts(path); known && known->kind == FileKind::file)
                result.push_back({set, spec.id, path, known->size});
        }
    }
    return result;
}

Result<void> HookInstaller::restore(const HookBackup& backup)
{
    const ProviderSpec* const spec = ProviderRegistry::spec(backup.providerId);
    if (spec == nullptr)
        return Failure{QStringLiteral("there is no agent %1").arg(backup.providerId)};
    Operation operation(m_environment, m_files, m_clock);
    if (Result<void> begun = operation.begin(); !begun)
        return begun;
    const QString source = operation.backups().pathIn(backup.set, *spec);
    const auto sourceFacts = m_files.facts(source);
    const Result<QByteArray> content = m_files.read(source);
    if (!content)
        return content.failure();
    const QString path = operation.scope().path(*spec);
    const Operation::Step stage = [&](const ProviderSpec&) -> Result<void> {
        std::optional<QByteArray> current;
        if (const auto known = m_files.facts(path)) {
            Result<QByteArray> bytes = m_files.read(path);
            if (!bytes)
                return bytes.failure();
            if (*bytes == *content)
                return {};
            if (const Result<QString> kept = operation.backups().store(*spec, *bytes, known->mode); !kept)
                return kept.failure();
            current = std::move(bytes).value();
        }
        return operation.writer().stage(path, current, *content, sourceFacts ? sourceFacts->mode : 0600);
    };
    if (Result<void> staged = stage(*spec); !staged)
        return staged;
    for (const auto& failed : operation.commit(stage))
        return Failure{failed.second};
    NibboLog::log(QStringLiteral("hook restore: %1 from backup %2").arg(spec->title, backup.set));
    return {};
}

} // namespace nibbo
