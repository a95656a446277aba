#pragma once

#include "base/Published.h"
#include "settings/Settings.h"
#include "settings/UserDefaults.h"

#include <QJsonObject>
#include <QObject>

#include <functional>
#include <memory>

namespace nibbo {

/// The one owner of every preference. Changes are written through to the preferences file and announced at
/// once. Main thread, but for `snapshot`. It never fails: what cannot be read falls back to its default, what
/// cannot be written is logged. It clamps nothing; the controls of the settings window do.
class SettingsStore final : public QObject
{
    Q_OBJECT
public:
    /// `defaults` must outlive the store.
    explicit SettingsStore(UserDefaults& defaults, QObject* parent = nullptr);

    const Settings& current() const { return m_settings; }
    /// The language that texts are shown in, computed afresh.
    AppLanguage language() const { return m_settings.effectiveLanguage(); }
    /// An immutable copy for other threads; any thread.
    std::shared_ptr<const Settings> snapshot() const { return m_snapshot.load(); }

    /// Edits a copy, writes what differs and announces it.
    void change(const std::function<void(Settings&)>& edit);

    bool isEnabled(const QString& providerId) const;
    void setEnabled(const QString& providerId, bool enabled);

    /// What is known of the agent tools on this machine; not kept over a restart.
    const QMap<QString, AgentStatus>& statuses() const { return m_statuses; }
    void setStatus(const QString& providerId, AgentStatus status);

    QString summaryModel(SummaryProvider provider) const;
    void setSummaryModel(SummaryProvider provider, const QString& model);
    QString summaryBaseURL(SummaryProvider provider) const;
    void setSummaryBaseURL(SummaryProvider provider, const QString& url);

    void resetAll();
    QJsonObject exportDictionary() const;
    void importDictionary(const QJsonObject& dictionary);

    UserDefaults& defaults() { return m_defaults; }

Q_SIGNALS:
    void changed(const nibbo::Settings& before);
    /// `launchAtLogin` was assigned, changed or not: the desktop's own entry is to follow.
    void launchAtLoginAssigned(bool enabled);
    void statusesChanged();
    void summaryOverridesChanged();

private:
    void load();
    void apply(Settings next, bool writeEverything);

    UserDefaults& m_defaults;
    Settings m_settings;
    QMap<QString, AgentStatus> m_statuses;
    Published<Settings> m_snapshot;
};

/// The model and address that a provider gets where the user gave none; the custom provider has neither.
QString defaultSummaryModel(SummaryProvider provider);
QString defaultSummaryBaseURL(SummaryProvider provider);

/// What has no stored value yet: the values of a fresh installation.
Settings defaultSettings();

} // namespace nibbo
