#pragma once

#include "base/AppPaths.h"
#include "base/Random.h"
#include "base/Time.h"
#include "settings/SettingsStore.h"
#include "settings/UserDefaults.h"

#include <QObject>

#include <functional>
#include <memory>

namespace nibbo {

class AgentEventBus;
class AgentSessionStore;
class BubblePresenter;
class BubbleView;
class DesktopPreferences;
class HookGuardian;
class HookInstaller;
class LoginItem;
class NibboNotifications;
class OnboardingWindowController;
class Notifier;
class PackLibrary;
class PetMenuController;
class PetViewModel;
class PetWindowController;
class PosixFileSystem;
class ProcessList;
class SecretStore;
class SettingsWindowController;
class SmartSummarizer;
struct SettingsServices;
class StatusItem;

/// What of the user's surroundings a run may touch.
enum class Surroundings
{
    /// Hooks, login item, status bar, notifications, keyring.
    real,
    /// The socket and the pet alone: the demo.
    none
};

/// The composition root: makes exactly one of everything, ties it together, starts it in order, and takes it
/// down. Main thread.
class Application final : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        AppPaths paths;
        Surroundings surroundings = Surroundings::real;
        /// Told the name of each step as start-up comes to it.
        std::function<void(const QString& step)> onStep = [](const QString&) {};
    };

    explicit Application(Options options);
    ~Application() override;

    void start();
    /// What a second start of the program asks for.
    void showSettings();

    PetViewModel& pet() { return *m_pet; }
    AgentSessionStore& sessions() { return *m_sessions; }
    SettingsStore& settings() { return m_settings; }
    QWidget& petWindow();

private:
    void connectPet();
    void followDesktopColours();
    void connectEvents();
    void connectSettings();
    /// Any thread: what it reads of the settings is their snapshot.
    HookInstaller makeInstaller();
    SettingsServices services();
    void runDoctor(std::function<void(const QString& report)> answer);
    void detectAgents();
    void showOnboarding();
    void showPetMenu(const QPoint& where);
    bool isReal() const { return m_options.surroundings == Surroundings::real; }

    Options m_options;
    SystemClock m_clock;
    EventLoopScheduler m_scheduler;
    SystemRandom m_random;
    UserDefaults m_defaults;
    SettingsStore m_settings;

    std::unique_ptr<ProcessList> m_processes;
    std::unique_ptr<PosixFileSystem> m_files;
    std::unique_ptr<HookGuardian> m_guardian;
    std::unique_ptr<Notifier> m_notifier;
    std::unique_ptr<NibboNotifications> m_notifications;
    std::unique_ptr<SecretStore> m_secrets;
    std::unique_ptr<LoginItem> m_loginItem;
    std::unique_ptr<DesktopPreferences> m_desktop;
    std::unique_ptr<PackLibrary> m_packs;
    std::unique_ptr<SmartSummarizer> m_summarizer;
    std::unique_ptr<PetViewModel> m_pet;
    std::unique_ptr<AgentSessionStore> m_sessions;
    std::unique_ptr<AgentEventBus> m_bus;
    std::unique_ptr<PetMenuController> m_menu;
    std::unique_ptr<PetWindowController> m_window;
    BubbleView* m_bubble = nullptr;
    std::unique_ptr<BubblePresenter> m_bubblePresenter;
    std::unique_ptr<SettingsWindowController> m_settingsWindow;
    std::unique_ptr<OnboardingWindowController> m_onboarding;
    std::unique_ptr<StatusItem> m_statusItem;
};

} // namespace nibbo
