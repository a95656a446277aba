#pragma once

#include "settings/view/Aside.h"
#include "settings/view/SettingsServices.h"

#include <QObject>

#include <memory>
#include <optional>

class QWidget;

namespace nibbo {

class SettingsWindow;

/// The pages of the settings window, in the order of its sidebar.
enum class SettingsPageId
{
    sessions,
    general,
    pet,
    agents,
    approvals,
    notifications,
    appearance,
    summaries,
    advanced
};

/// Owns the settings window, which is made when it is first shown and kept from then on. Main thread; what
/// the services name outlives it.
class SettingsWindowController final : public QObject
{
    Q_OBJECT
public:
    explicit SettingsWindowController(SettingsServices services);
    ~SettingsWindowController() override;

    /// In front of the other windows, on the page that is asked for or on the one it was left on.
    void show(std::optional<SettingsPageId> page = std::nullopt);
    /// Null before the first `show`.
    QWidget* window() const;

private:
    SettingsServices m_services;
    std::unique_ptr<SettingsWindow> m_window;
    // Gone before the window: what runs aside may still speak of it.
    Aside m_aside;
};

} // namespace nibbo
