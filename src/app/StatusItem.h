#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>

#include <memory>

namespace nibbo {

class PetMenuController;

/// The item in the desktop's status bar: the pet's picture with the pet's menu. It comes back when the status
/// bar does. A click opens the settings. Main thread.
class StatusItem final : public QObject
{
    Q_OBJECT
public:
    /// `picture` is shown as it is; where it is missing the theme's own pawprint or the application icon
    /// stands in.
    StatusItem(PetMenuController& menu, const QString& picture, QObject* parent = nullptr);

    /// Rebuilds the menu, in the language of now.
    void refreshMenu();

Q_SIGNALS:
    void activated();

private Q_SLOTS:
    void askForHost();

private:
    void show();
    void lookForOldTray();

    PetMenuController& m_controller;
    QIcon m_icon;
    QMenu m_menu;
    /// Trays of the older kind are looked for during the first two minutes.
    QTimer m_look;
    int m_looks = 0;
    std::unique_ptr<QSystemTrayIcon> m_item;
};

} // namespace nibbo
