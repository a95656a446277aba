#pragma once

#include "settings/view/SettingsPage.h"

#include <QHash>
#include <QMap>
#include <QTimer>

class QTreeWidget;

namespace nibbo {

struct ProviderSpec;

/// The agents: which are watched, which are wired, and the backups of their files. What reads or writes the
/// agents' files runs aside.
class AgentsPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit AgentsPage(const Context& context);

protected:
    void opened() override;

private:
    void addBridge();
    void addProviders();
    void addBackups();

    /// Reads again what the disk says.
    void inspect();
    void readLastEvents();
    void showBridge();
    void showBackups();
    void setBusy(bool busy);

    void askInstall();
    void askRemove();
    void askRestore();
    /// Changes the agents' files, tells what failed and looks again.
    void work(std::function<Result<void>(HookInstaller&)> change, TextPair failed);
    QString fileLines(const std::function<bool(const ProviderSpec&)>& which) const;

    /// Nothing until the disk was first asked.
    QMap<QString, bool> m_wired;
    std::vector<HookBackup> m_backups;
    /// By the agent's title.
    QHash<QString, QString> m_lastEvents;
    QTimer m_soon;
    std::vector<std::function<void()>> m_rows;
    TextLabel* m_bridge = nullptr;
    QPushButton* m_install = nullptr;
    QPushButton* m_remove = nullptr;
    QTreeWidget* m_backupList = nullptr;
    QPushButton* m_restore = nullptr;
};

} // namespace nibbo
