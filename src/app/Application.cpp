#include "app/Application.h"

#include "agents/ProviderRegistry.h"
#include "app/Doctor.h"
#include "app/NibboNotifications.h"
#include "app/ShareFolder.h"
#include "app/StatusItem.h"
#include "app/onboarding/OnboardingWindowController.h"
#include "base/NibboLog.h"
#include "hooks/HookGuardian.h"
#include "hooks/HookInstaller.h"
#include "hooks/PosixFileSystem.h"
#include "intake/AgentEventBus.h"
#include "pet/PetViewModel.h"
#include "pet/packs/PackLibrary.h"
#include "pet/view/BubblePresenter.h"
#include "pet/view/BubbleView.h"
#include "pet/view/PetMenuController.h"
#include "pet/view/PetWindow.h"
#include "platform/DesktopPreferences.h"
#include "platform/linux/AutostartLoginItem.h"
#include "platform/linux/DBusNotifier.h"
#include "platform/linux/KeyringSecretStore.h"
#include "platform/linux/LinuxProcessList.h"
#include "platform/null/NullPlatform.h"
#include "sessions/AgentSessionStore.h"
#include "sessions/SmartSummarizer.h"
#include "settings/SecretStore.h"
#include "settings/view/SettingsServices.h"
#include "settings/view/SettingsWindow.h"
#include "settings/view/Theme.h"

#include <QApplication>
#include <QMenu>
#include <QThreadPool>

#include <sstream>
#include <utility>

namespace nibbo {
namespace {

const QString completedOnboardingKey = QStringLiteral("hasCompletedOnboarding");
const QString firstLaunchKey = QStringLiteral("hasOpenedSettingsOnFirstLaunch");

/// Where the login item is to find us: this very file, symbolic links of the installation left as they are.
QString programFile()
{
    return QCoreApplication::applicationFilePath();
}

} // namespace

Application::Application(Options options)
    : m_options(std::move(options))
    , m_defaults(m_options.paths.preferencesFile())
    , m_settings(m_defaults)
    , m_files(std::make_unique<PosixFileSystem>())
{
    if (isReal()) {
        m_processes = std::make_unique<LinuxProcessList>();
        m_notifier = std::make_unique<DBusNotifier>();
        m_secrets = std::make_unique<KeyringSecretStore>();
        m_loginItem = std::make_unique<AutostartLoginItem>(m_options.paths.configHome(), programFile());
    } else {
        m_processes = std::make_unique<NullProcessList>();
        m_notifier = std::make_unique<NullNotifier>();
        m_secrets = std::make_unique<NullSecretStore>();
        m_loginItem = std::make_unique<NullLoginItem>();
    }
    m_notifications = std::make_unique<NibboNotifications>(m_settings, *m_notifier);
    m_desktop = makeDesktopPreferences();
    m_packs = std::make_unique<PackLibrary>(m_options.paths, shareFolder() + QStringLiteral("/pets"));
    m_summarizer = std::make_unique<SmartSummarizer>(m_settings, *m_secrets, m_clock, m_scheduler);
    m_pet = std::make_unique<PetViewModel>(m_clock, m_scheduler, m_random,
                                           [this]() -> const Settings& { return m_settings.current(); });
    m_bus = std::make_unique<AgentEventBus>(
        m_options.paths, [this] { return m_settings.snapshot(); }, *m_processes, m_clock);
    m_sessions = std::make_unique<AgentSessionStore>(
        *m_pet, m_clock, m_scheduler, m_random,
        AgentSessionStore::Ports{
            [this]() -> const Settings& { return m_settings.current(); },
            [this](const AgentEvent& event) { m_notifications->notify(event.type, event); },
            [this](const QUuid& eventId) {
                m_bus->abandonApproval(eventId);
                m_notifications->withdraw(eventId);
            },
            m_summarizer.get(),
        });
    m_summarizer->setDeliver([this](const QString& sessionKey, const QString& line, const QString& forSay) {
        m_sessions->setSummary(sessionKey, line, forSay);
    });
    m_menu = std::make_unique<PetMenuController>(*m_pet, [this] { return m_settings.language(); });
}

Application::~Application()
{
    // Nobody may answer into what is being taken down; who waits for a verdict asks the user by itself.
    m_statusItem.reset();
    QThreadPool::globalInstance()->waitForDone();
    m_bus->stop();
}

QWidget& Application::petWindow()
{
    return m_window->window();
}

void Application::start()
{
    const auto step = [this](const char* name) { m_options.onStep(QString::fromLatin1(name)); };

    step("log");
    NibboLog::log(QStringLiteral("applicationDidFinishLaunching policy will be set to accessory"));

    step("pet window");
    auto bubble = std::make_unique<BubbleView>(m_clock, m_scheduler);
    m_bubble = bubble.get();
    m_window = std::make_unique<PetWindowController>(*m_pet, m_settings, m_clock, m_scheduler,
                                                     shareFolder() + QStringLiteral("/pets/nibbo"),
                                                     std::move(bubble));
    m_bubblePresenter = std::make_unique<BubblePresenter>(*m_bubble, *m_pet, m_settings);
    connectPet();
    m_window->showPet();

    step("settings window");
    connectSettings();
    m_settingsWindow = std::make_unique<SettingsWindowController>(services());

    step("menu");
    m_menu->setOpenSettingsHandler([this] { showSettings(); });
    m_menu->setResetPositionHandler([this] { m_window->resetPosition(); });
    connect(m_pet.get(), &PetViewModel::openSettingsRequested, this, &Application::showSettings);

    if (isReal()) {
        step("hooks");
        makeInstaller().ensureHealthy();
        step("hook guardian");
        m_guardian = std::make_unique<HookGuardian>([this] { return makeInstaller(); });
        m_guardian->start();
    }

    step("event bus");
    connectEvents();
    m_sessions->start();
    m_bus->start();

    if (!isReal())
        return;
    step("agent detection");
    detectAgents();
    migrateOldKey(*m_secrets);
    m_loginItem->refresh();

    step("status item");
    m_statusItem =
        std::make_unique<StatusItem>(*m_menu, shareFolder() + QStringLiteral("/icons/MenuBarIcon.svg"));
    connect(m_statusItem.get(), &StatusItem::activated, this, &Application::showSettings);

    if (!m_defaults.boolean(firstLaunchKey).value_or(false)) {
        step("first launch");
        m_defaults.set(firstLaunchKey, true);
        showSettings();
        showOnboarding();
    }
}

void Application::connectPet()
{
    const auto followDesktop = [this] {
        followDesktopColours();
        const std::optional<bool> dark = m_desktop->prefersDark();
        m_bubblePresenter->setDesktopScheme(
            dark ? std::optional(*dark ? ColourScheme::dark : ColourScheme::light) : std::nullopt);
        m_window->setReducedMotion(m_desktop->reducesMotion());
        m_bubblePresenter->setReducedMotion(m_desktop->reducesMotion());
    };
    connect(m_desktop.get(), &DesktopPreferences::changed, this, followDesktop);
    followDesktop();
    const auto followBlending = [this] { m_bubblePresenter->setComposited(m_window->blendsTransparency()); };
    connect(m_window.get(), &PetWindowController::blendingChanged, this, followBlending);
    followBlending();
    connect(m_window.get(), &PetWindowController::menuRequested, this, &Application::showPetMenu);

    connect(m_pet.get(), &PetViewModel::approvalSubmitted, this, [this](const QUuid& eventId, bool allow) {
        m_bus->resolveApproval(eventId, allow);
        m_sessions->resolveApproval(eventId, allow);
        m_notifications->withdraw(eventId);
    });
    connect(m_pet.get(), &PetViewModel::allowAllRequested, this, [this] {
        m_settings.change([](Settings& settings) { settings.approvalMode = ApprovalMode::allowAll; });
    });
}

void Application::followDesktopColours()
{
    // Not every desktop's palette reaches us; its word does.
    QApplication::setPalette(QPalette());
    if (m_desktop->prefersDark().value_or(false) && !theme::isDark(QApplication::palette()))
        QApplication::setPalette(theme::darkDesktop());
}

void Application::connectEvents()
{
    connect(m_bus.get(), &AgentEventBus::eventDelivered, m_sessions.get(), &AgentSessionStore::apply);
    connect(m_bus.get(), &AgentEventBus::statusDetected, &m_settings, &SettingsStore::setStatus);
}

void Application::connectSettings()
{
    connect(&m_settings, &SettingsStore::changed, this, [this](const Settings& before) {
        m_sessions->settingsChanged(before);
        if (m_statusItem && m_settings.current().language != before.language)
            m_statusItem->refreshMenu();
    });
    connect(&m_settings, &SettingsStore::launchAtLoginAssigned, this,
            [this](bool enabled) { m_loginItem->set(enabled); });
}

HookInstaller Application::makeInstaller()
{
    return HookInstaller(
        {m_options.paths, installPrefix(), LauncherPlatform::linuxDesktop, m_settings.snapshot()->enabled},
        *m_files, m_clock);
}

void Application::detectAgents()
{
    for (const auto& [provider, status] : m_bus->detector().statuses())
        m_settings.setStatus(provider.rawValue(), status);
}

SettingsServices Application::services()
{
    SettingsServices made{
        m_settings,
        *m_sessions,
        *m_packs,
        *m_summarizer,
        *m_secrets,
        m_options.paths,
        [this] { return makeInstaller(); },
        [this] { detectAgents(); },
        [this](std::function<void(const QString&)> answer) { runDoctor(std::move(answer)); },
        [this] { showOnboarding(); },
        [log = m_options.paths.agentLogFile()] { return lastEvents(log); }};
    made.reducesMotion = [this] { return m_desktop->reducesMotion(); };
    return made;
}

void Application::runDoctor(std::function<void(const QString& report)> answer)
{
    // It starts programs and waits for them, so it runs aside; an application that ends meanwhile is not
    // told.
    const HookEnvironment environment{m_options.paths, installPrefix(), LauncherPlatform::linuxDesktop,
                                      m_settings.snapshot()->enabled};
    QThreadPool::globalInstance()->start([this, environment, answer = std::move(answer)] {
        std::ostringstream report;
        Doctor(environment, *m_files, m_clock, ExecutableFinder(m_options.paths.home()), {}).print(report);
        QMetaObject::invokeMethod(
            this, [answer, text = QString::fromStdString(report.str())] { answer(text); },
            Qt::QueuedConnection);
    });
}

void Application::showSettings()
{
    if (m_settingsWindow)
        m_settingsWindow->show();
}

void Application::showOnboarding()
{
    m_onboarding = std::make_unique<OnboardingWindowController>(
        services(), [this] { m_defaults.set(completedOnboardingKey, true); });
    m_onboarding->show();
}

void Application::showPetMenu(const QPoint& where)
{
    QMenu* const menu = m_menu->makeMenu().release();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(where);
}

} // namespace nibbo
