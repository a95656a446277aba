#include "hooks/HookInstaller.h"

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"
#include "hooks/HookBackups.h"
#include "hooks/HookWriter.h"
#include "hooks/SafeWriter.h"
#include "hooks/SharedHooksWriter.h"

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
        , m_backups(files, clock, environment.paths.backupsDirectory())
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
        const Result<SafeWriter::Outcome> launcher =
            m_writer.replace(home + QLatin1String(launcherRelativePath), launcherScript(m_generated), 0755);
        if (!launcher)
            return launcher.failure();
        return m_environment.platform == LauncherPlatform::linuxDesktop
                   ? copyCleaner(home + QLatin1String(cleanerRelativePath))
                   : Result<void>();
    }

    FileSystem& files() { return m_files; }
    HookBackups& backups() { return m_backups; }
    SafeWriter& writer() { return m_writer; }
    const HookScope& scope() const { return m_scope; }

private:
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
        const Result<SafeWriter::Outcome> copied = m_writer.replace(target, *content, 0755);
        return copied ? Result<void>() : Result<void>(copied.failure());
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

Result<void> installInto(Operation& operation, const HookInstaller& installer)
{
    if (Result<void> launcher = operation.writeLauncher(); !launcher)
        return launcher;
    if (Result<void> begun = operation.backups().begin(); !begun)
        return begun;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (!installer.isEnabled(spec))
            continue;
        if (Result<void> installed = operation.writerOf(spec).install(spec); !installed)
            return installed;
        NibboLog::log(QStringLiteral("hook install: %1 -> %2").arg(spec.title, operation.scope().path(spec)));
    }
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (installer.isEnabled(spec))
            continue;
        if (Result<void> removed = operation.writerOf(spec).remove(spec); !removed)
            NibboLog::log(QStringLiteral("hook install: ") + removed.error());
    }
    if (Result<void> noted = operation.backups().makeLatest(); !noted)
        NibboLog::log(QStringLiteral("hook install: ") + noted.error());
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
        NibboLog::log(QStringLiteral("hook uninstall: ") + result.error());
        if (first)
            first = result;
    };
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (!isShared(spec))
            note(operation.writerOf(spec).remove(spec));
    }
    // A set is gone back to once: what was written after that is newer than the set.
    const std::optional<QString> latest = operation.backups().latest();
    const bool goBack = latest && !operation.backups().isRestored(*latest);
    for (const ProviderSpec* const spec : specs()) {
        SharedHooksWriter& writer = operation.sharedWriterOf(*spec);
        if (!goBack) {
            note(writer.remove(*spec));
            continue;
        }
        const bool held = m_files.facts(operation.backups().pathIn(*latest, *spec)).has_value();
        note(writer.restore(*spec, *latest));
        if (held)
            NibboLog::log(QStringLiteral("hook restore: %1 from backup %2").arg(spec->title, *latest));
    }
    if (goBack && first)
        note(operation.backups().markRestored(*latest));
    return first;
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

HookHealth HookInstaller::ensureHealthy()
{
    const auto failed = [](const QString& error) {
        NibboLog::log(QStringLiteral("hook ensure: repair FAILED: ") + error);
        return HookHealth::failed;
    };
    Operation operation(m_environment, m_files, m_clock);
    if (Result<void> begun = operation.begin(); !begun)
        return failed(begun.error());
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
    const HookBackups stored(m_files, m_clock, m_environment.paths.backupsDirectory());
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
    const Result<SafeWriter::Outcome> outcome =
        operation.writer().writeInPlace(path, current, *content, sourceFacts ? sourceFacts->mode : 0600);
    if (!outcome)
        return outcome.failure();
    if (*outcome == SafeWriter::Outcome::overtaken)
        return Failure{QStringLiteral("cannot write %1: another program writes it").arg(path)};
    NibboLog::log(QStringLiteral("hook restore: %1 from backup %2").arg(spec->title, backup.set));
    return {};
}

} // namespace nibbo
