#include "settings/SettingsStore.h"

#include "agents/ProviderRegistry.h"
#include "approval/CommandLists.h"
#include "base/ThreadCheck.h"
#include "settings/SettingsTexts.h"

#include <QJsonArray>

#include <array>
#include <cmath>
#include <vector>

namespace nibbo {
namespace {

/// Whether a preference travels in an exported file.
enum class Travels
{
    yes,
    no
};

/// One preference: load, write-through, reset, export and import all walk the table of these.
struct Preference
{
    const char16_t* name;
    Travels travels;
    /// What is stored; undefined where the key is to be absent.
    QJsonValue (*get)(const Settings&);
    /// False for a value of the wrong type, which leaves the setting as it was.
    bool (*set)(Settings&, const QJsonValue&);

    QString key() const { return QStringLiteral("settings.") + QString::fromUtf16(name); }
};

QJsonValue toStored(bool value)
{
    return value;
}

QJsonValue toStored(double value)
{
    return value;
}

QJsonValue toStored(qint64 value)
{
    return value;
}

QJsonValue toStored(const QString& value)
{
    return value;
}

QJsonValue toStored(const QStringList& value)
{
    return QJsonArray::fromStringList(value);
}

QJsonValue toStored(const std::optional<QString>& value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Undefined);
}

template <typename Enum>
requires std::is_enum_v<Enum> QJsonValue toStored(Enum value)
{
    return rawValue(value);
}

bool fromStored(const QJsonValue& stored, bool& into)
{
    if (!stored.isBool())
        return false;
    into = stored.toBool();
    return true;
}

bool fromStored(const QJsonValue& stored, double& into)
{
    if (!stored.isDouble())
        return false;
    into = stored.toDouble();
    return true;
}

bool fromStored(const QJsonValue& stored, qint64& into)
{
    const double number = stored.toDouble();
    if (!stored.isDouble() || number != std::trunc(number) || std::abs(number) > 9.0e15)
        return false;
    into = static_cast<qint64>(number);
    return true;
}

bool fromStored(const QJsonValue& stored, QString& into)
{
    if (!stored.isString())
        return false;
    into = stored.toString();
    return true;
}

bool fromStored(const QJsonValue& stored, std::optional<QString>& into)
{
    if (!stored.isString())
        return false;
    // An export writes the empty text where there is none.
    into = stored.toString().isEmpty() ? std::nullopt : std::optional(stored.toString());
    return true;
}

bool fromStored(const QJsonValue& stored, QStringList& into)
{
    if (!stored.isArray())
        return false;
    QStringList list;
    for (const QJsonValue& item : stored.toArray()) {
        if (!item.isString())
            return false;
        list.append(item.toString());
    }
    into = list;
    return true;
}

template <typename Enum>
requires std::is_enum_v<Enum>
bool fromStored(const QJsonValue& stored, Enum& into)
{
    const std::optional<Enum> value = fromRawValue<Enum>(stored.toString());
    if (!stored.isString() || !value)
        return false;
    into = *value;
    return true;
}

template <auto Member>
constexpr Preference preference(const char16_t* name, Travels travels = Travels::yes)
{
    return {name, travels, [](const Settings& settings) { return toStored(settings.*Member); },
            [](Settings& settings, const QJsonValue& value) { return fromStored(value, settings.*Member); }};
}

constexpr std::array preferences{
    preference<&Settings::launchAtLogin>(u"launchAtLogin"),
    preference<&Settings::alwaysOnTop>(u"alwaysOnTop"),
    preference<&Settings::pauseNibbo>(u"pauseNibbo"),
    preference<&Settings::petSource>(u"petSource"),
    preference<&Settings::customPetPath>(u"customPetPath"),
    // A pack's folder means nothing on another machine.
    preference<&Settings::activePackPath>(u"activePackPath", Travels::no),
    preference<&Settings::petSizeScale>(u"petSizeScale"),
    preference<&Settings::bubbleStyle>(u"bubbleStyle"),
    preference<&Settings::singleClickBehavior>(u"singleClickBehavior"),
    preference<&Settings::doubleClickBehavior>(u"doubleClickBehavior"),
    preference<&Settings::edgeSnap>(u"edgeSnap"),
    preference<&Settings::idleSleepMinutes>(u"idleSleepMinutes"),
    preference<&Settings::approvalMode>(u"approvalMode"),
    preference<&Settings::trustedCommands>(u"trustedCommands"),
    preference<&Settings::dangerousCommands>(u"dangerousCommands"),
    preference<&Settings::bypassRiskCheck>(u"bypassRiskCheck"),
    preference<&Settings::showNotifications>(u"showNotifications"),
    preference<&Settings::notifyApprovalRequired>(u"notifyApprovalRequired"),
    preference<&Settings::notifyTaskCompleted>(u"notifyTaskCompleted"),
    preference<&Settings::notifyRiskyAction>(u"notifyRiskyAction"),
    preference<&Settings::themeColor>(u"themeColor"),
    preference<&Settings::animationSpeed>(u"animationSpeed"),
    preference<&Settings::showActivityLabel>(u"showActivityLabel"),
    preference<&Settings::showProviderChip>(u"showProviderChip"),
    preference<&Settings::smartSummary>(u"smartSummary"),
    preference<&Settings::summaryProvider>(u"summaryProvider"),
    preference<&Settings::language>(u"language"),
};

const QJsonValue absent(QJsonValue::Undefined);

QString enableKey(const QString& id)
{
    return QStringLiteral("settings.enable.") + id.toLower();
}

/// Where earlier versions kept the flags of the first four agents.
QString legacyEnableKey(const QString& id)
{
    static const QMap<QString, QString> keys{
        {QStringLiteral("claude"), QStringLiteral("settings.enableClaude")},
        {QStringLiteral("codex"), QStringLiteral("settings.enableCodex")},
        {QStringLiteral("gemini"), QStringLiteral("settings.enableGemini")},
        {QStringLiteral("opencode"), QStringLiteral("settings.enableOpenCode")},
    };
    return keys.value(id);
}

QString modelKey(SummaryProvider provider)
{
    return QStringLiteral("summary.model.") + rawValue(provider);
}

QString baseURLKey(SummaryProvider provider)
{
    return QStringLiteral("summary.baseURL.") + rawValue(provider);
}

struct SummaryDefaults
{
    const char16_t* model;
    const char16_t* baseURL;
};

constexpr std::array<SummaryDefaults, 4> summaryDefaults{{
    {u"claude-haiku-4-5", u"https://api.anthropic.com"},
    {u"gpt-4.1-mini", u"https://api.openai.com/v1"},
    {u"deepseek-chat", u"https://api.deepseek.com/v1"},
    {u"", u""},
}};

} // namespace

QString defaultSummaryModel(SummaryProvider provider)
{
    return QString::fromUtf16(summaryDefaults[static_cast<std::size_t>(provider)].model);
}

QString defaultSummaryBaseURL(SummaryProvider provider)
{
    return QString::fromUtf16(summaryDefaults[static_cast<std::size_t>(provider)].baseURL);
}

Settings defaultSettings()
{
    Settings settings;
    settings.trustedCommands = defaultTrustedCommands();
    settings.dangerousCommands = defaultDangerousCommands();
    for (const ProviderSpec& spec : ProviderRegistry::all())
        settings.enabled.insert(spec.id, spec.confirmed);
    return settings;
}

SettingsStore::SettingsStore(UserDefaults& defaults, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_settings(defaultSettings())
{
    load();
    m_snapshot.store(std::make_shared<const Settings>(m_settings));
}

void SettingsStore::load()
{
    for (const Preference& preference : preferences)
        preference.set(m_settings, m_defaults.value(preference.key()));
    std::vector<UserDefaults::Change> migrated;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        m_statuses.insert(spec.id, AgentStatus::unknown);
        if (const std::optional<bool> stored = m_defaults.boolean(enableKey(spec.id))) {
            m_settings.enabled[spec.id] = *stored;
        } else if (const std::optional<bool> legacy = m_defaults.boolean(legacyEnableKey(spec.id))) {
            m_settings.enabled[spec.id] = *legacy;
            migrated.emplace_back(enableKey(spec.id), *legacy);
        }
    }
    m_defaults.write(migrated);
}

void SettingsStore::change(const std::function<void(Settings&)>& edit)
{
    assertMainThread();
    Settings next = m_settings;
    edit(next);
    apply(std::move(next), false);
}

void SettingsStore::apply(Settings next, bool writeEverything)
{
    const Settings before = m_settings;
    std::vector<UserDefaults::Change> changes;
    for (const Preference& preference : preferences) {
        const QJsonValue value = preference.get(next);
        if (writeEverything || value != preference.get(before))
            changes.emplace_back(preference.key(), value);
    }
    for (auto entry = next.enabled.cbegin(); entry != next.enabled.cend(); ++entry) {
        const auto old = before.enabled.constFind(entry.key());
        if (writeEverything || old == before.enabled.cend() || *old != *entry)
            changes.emplace_back(enableKey(entry.key()), *entry);
    }
    if (next != before) {
        m_settings = std::move(next);
        m_snapshot.store(std::make_shared<const Settings>(m_settings));
    }
    m_defaults.write(changes);
    if (writeEverything || m_settings.launchAtLogin != before.launchAtLogin)
        Q_EMIT launchAtLoginAssigned(m_settings.launchAtLogin);
    if (m_settings != before)
        Q_EMIT changed(before);
}

bool SettingsStore::isEnabled(const QString& providerId) const
{
    const auto stored = m_settings.enabled.constFind(providerId.toLower());
    if (stored != m_settings.enabled.cend())
        return *stored;
    const ProviderSpec* spec = ProviderRegistry::spec(providerId);
    return spec != nullptr && spec->confirmed;
}

void SettingsStore::setEnabled(const QString& providerId, bool enabled)
{
    const QString id = providerId.toLower();
    // Written even when it is unchanged: from now on it is the user's word and not a default.
    m_defaults.set(enableKey(id), enabled);
    change([&id, enabled](Settings& settings) { settings.enabled[id] = enabled; });
}

void SettingsStore::setStatus(const QString& providerId, AgentStatus status)
{
    assertMainThread();
    AgentStatus& entry = m_statuses[providerId.toLower()];
    if (entry == status)
        return;
    entry = status;
    Q_EMIT statusesChanged();
}

QString SettingsStore::summaryModel(SummaryProvider provider) const
{
    const QString stored = m_defaults.text(modelKey(provider)).value_or(QString());
    return stored.isEmpty() ? defaultSummaryModel(provider) : stored;
}

void SettingsStore::setSummaryModel(SummaryProvider provider, const QString& model)
{
    m_defaults.set(modelKey(provider), model);
    Q_EMIT summaryOverridesChanged();
}

QString SettingsStore::summaryBaseURL(SummaryProvider provider) const
{
    // The three built-in providers are spoken to at their own address, whatever was stored.
    if (provider != SummaryProvider::custom)
        return defaultSummaryBaseURL(provider);
    return m_defaults.text(baseURLKey(provider)).value_or(QLatin1String(""));
}

void SettingsStore::setSummaryBaseURL(SummaryProvider provider, const QString& url)
{
    m_defaults.set(baseURLKey(provider), url);
    Q_EMIT summaryOverridesChanged();
}

void SettingsStore::resetAll()
{
    assertMainThread();
    std::vector<UserDefaults::Change> removed;
    for (const Preference& preference : preferences)
        removed.emplace_back(preference.key(), absent);
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        removed.emplace_back(enableKey(spec.id), absent);
        if (const QString legacy = legacyEnableKey(spec.id); !legacy.isEmpty())
            removed.emplace_back(legacy, absent);
    }
    m_defaults.write(removed);
    apply(defaultSettings(), true);
}

QJsonObject SettingsStore::exportDictionary() const
{
    QJsonObject dictionary{{QStringLiteral("version"), 1}};
    for (const Preference& preference : preferences) {
        if (preference.travels == Travels::no)
            continue;
        const QJsonValue value = preference.get(m_settings);
        dictionary.insert(QString::fromUtf16(preference.name),
                          value.isUndefined() ? QJsonValue(QString()) : value);
    }
    QJsonObject enabled;
    for (const ProviderSpec& spec : ProviderRegistry::all())
        enabled.insert(spec.id, isEnabled(spec.id));
    QJsonObject models;
    QJsonObject urls;
    for (const EnumRow<SummaryProvider>& row : rowsOf(SummaryProvider{})) {
        models.insert(rawValue(row.value), summaryModel(row.value));
        urls.insert(rawValue(row.value), summaryBaseURL(row.value));
    }
    dictionary.insert(QStringLiteral("enabled"), enabled);
    dictionary.insert(QStringLiteral("summaryModels"), models);
    dictionary.insert(QStringLiteral("summaryBaseURLs"), urls);
    return dictionary;
}

void SettingsStore::importDictionary(const QJsonObject& dictionary)
{
    assertMainThread();
    Settings next = m_settings;
    for (const Preference& preference : preferences) {
        if (preference.travels == Travels::yes)
            preference.set(next, dictionary.value(QStringView(preference.name)));
    }
    const QJsonObject enabled = dictionary.value(QStringLiteral("enabled")).toObject();
    for (auto entry = enabled.begin(); entry != enabled.end(); ++entry) {
        if (entry->isBool())
            next.enabled[entry.key().toLower()] = entry->toBool();
    }
    // Read before anything is announced: observers see the whole import at once.
    const bool assignsLogin = dictionary.value(QStringLiteral("launchAtLogin")).isBool();
    const bool loginUnchanged = next.launchAtLogin == m_settings.launchAtLogin;
    std::vector<UserDefaults::Change> overrides;
    const auto collect = [&overrides, &dictionary](QLatin1String table, QString (*key)(SummaryProvider)) {
        const QJsonObject entries = dictionary.value(table).toObject();
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            const std::optional<SummaryProvider> provider = fromRawValue<SummaryProvider>(entry.key());
            if (provider && entry->isString())
                overrides.emplace_back(key(*provider), entry->toString().trimmed());
        }
    };
    collect(QLatin1String("summaryModels"), modelKey);
    collect(QLatin1String("summaryBaseURLs"), baseURLKey);
    m_defaults.write(overrides);
    apply(std::move(next), false);
    if (assignsLogin && loginUnchanged)
        Q_EMIT launchAtLoginAssigned(m_settings.launchAtLogin);
    if (!overrides.empty())
        Q_EMIT summaryOverridesChanged();
}

} // namespace nibbo
