#include "app/onboarding/AgentIntegrationPage.h"

#include "agents/ProviderRegistry.h"
#include "app/onboarding/OnboardingAgentRow.h"
#include "app/onboarding/OnboardingButton.h"
#include "base/NibboLog.h"
#include "hooks/InstallQuestion.h"
#include "settings/view/Aside.h"
#include "settings/view/Boxes.h"
#include "settings/view/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace nibbo {

AgentIntegrationPage::AgentIntegrationPage(const Context& context)
    : OnboardingPage(context)
    , m_message(new TextLabel(TextLabel::Tone::quiet))
    , m_detect(new OnboardingButton(OnboardingButton::Kind::ordinary))
    , m_install(new OnboardingButton(OnboardingButton::Kind::ordinary))
    , m_installed(new QWidget)
    , m_installedSymbol(new QLabel)
    , m_installedText(new TextLabel)
{
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(28, 20, 28, 0);
    column->setSpacing(0);
    addHeading(*column);
    column->addSpacing(10);

    // Down the left column and then down the right one: the order of the registry, by eye and by key.
    auto* const table = new QHBoxLayout;
    table->setSpacing(12);
    const auto& all = ProviderRegistry::all();
    SettingsGroup* half = nullptr;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (i % ((all.size() + 1) / 2) == 0) {
            half = new SettingsGroup;
            table->addWidget(half, 1, Qt::AlignTop);
        }
        auto* const row = new OnboardingAgentRow(all[i], settings());
        half->add(row);
        m_rows.push_back(row);
    }
    column->addLayout(table);
    column->addSpacing(8);
    column->addStretch(1);

    m_message->setObjectName(QStringLiteral("message"));
    m_message->setFont(theme::scaled(theme::textFont(), 0.95));
    m_message->setContentsMargins(44, 0, 44, 0);
    m_message->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    column->addWidget(m_message);
    column->addSpacing(6);

    m_detect->setObjectName(QStringLiteral("detect"));
    m_detect->setSymbol(onboardingSymbol(QStringLiteral("arrow.triangle.2.circlepath")));
    m_install->setObjectName(QStringLiteral("install"));
    m_install->setSymbol(onboardingSymbol(QStringLiteral("link")));
    m_installed->setObjectName(QStringLiteral("installed"));
    m_installedText->setObjectName(QStringLiteral("installedText"));
    m_installedText->setFont(theme::heading(1.0));
    m_installedText->setWordWrap(false);
    auto* const mark = new QHBoxLayout(m_installed);
    mark->setContentsMargins(10, 0, 10, 0);
    mark->setSpacing(8);
    mark->addWidget(m_installedSymbol);
    mark->addWidget(m_installedText);
    auto* const actions = new QHBoxLayout;
    actions->setSpacing(8);
    actions->addStretch(1);
    actions->addWidget(m_detect);
    actions->addWidget(m_install);
    actions->addWidget(m_installed);
    actions->addStretch(1);
    column->addLayout(actions);

    m_installed->hide();

    connect(m_detect, &OnboardingButton::clicked, this, &AgentIntegrationPage::runDetection);
    connect(m_install, &OnboardingButton::clicked, this, &AgentIntegrationPage::askToInstall);
    connect(&settings(), &SettingsStore::changed, this, &AgentIntegrationPage::onSettingsChanged);
    connect(&settings(), &SettingsStore::statusesChanged, this, &AgentIntegrationPage::refresh);
    retranslate();
}

void AgentIntegrationPage::retranslate()
{
    setHeading(say(u"Setup Agent Integration", u"设置 Agent 接入"),
               say(u"Connect your terminal agents to Nibbo.", u"把你的终端 agent 连接到 Nibbo。"));
    for (OnboardingAgentRow* row : m_rows)
        row->retranslate();
    m_detect->setText(say(u"Run Detection", u"重新检测"));
    m_installedText->setText(say(u"Bridge Installed", u"桥接已安装"));
    refresh();
}

void AgentIntegrationPage::refresh()
{
    const bool busy = m_bridge == Bridge::installing;
    m_install->setText(busy ? say(u"Installing…", u"正在安装…") : say(u"Install Bridge", u"安装桥接"));
    m_install->setAccessibleName(m_install->text());
    m_detect->setAccessibleName(m_detect->text());
    m_install->updateGeometry();

    const bool dark = theme::isDark(palette());
    const QColor green = dark ? QColor(0x5f, 0xd0, 0x8b) : QColor(0x1f, 0x86, 0x4e);
    const int side = fontMetrics().height() + 4;
    m_installedSymbol->setPixmap(theme::symbol(onboardingSymbol(QStringLiteral("checkmark.circle.fill")),
                                               side, devicePixelRatioF(), green));

    if (m_bridge == Bridge::installed) {
        m_message->setText(say(u"Agent events are wired into Nibbo. You're all set.",
                               u"Agent 事件已接入 Nibbo，一切就绪。"));
    } else {
        m_message->setText(
            say(u"Install the bridge to receive live agent events. Your CLIs keep working even when "
                u"Nibbo is closed.",
                u"安装桥接以接收实时 agent 事件。即使 Nibbo 关闭，你的 CLI 仍可正常工作。"));
    }
}

void AgentIntegrationPage::showEvent(QShowEvent* event)
{
    OnboardingPage::showEvent(event);
    m_install->setReducedMotion(reducesMotion(services(), *this));
    refresh();
}

void AgentIntegrationPage::runDetection()
{
    services().runDetection();
}

void AgentIntegrationPage::onSettingsChanged()
{
    // What is installed no longer is what is asked for.
    if (m_bridge == Bridge::installed && m_installedFor != settings().current().enabled)
        setBridge(Bridge::notInstalled);
}

void AgentIntegrationPage::askToInstall()
{
    if (m_bridge == Bridge::installing)
        return;
    const InstallQuestion question = installQuestion(services().installer(), language());
    askUser(this, QStringLiteral("installQuestion"), {question.title, question.message}, question.agree,
            language(), [this] { installBridge(); });
}

void AgentIntegrationPage::installBridge()
{
    m_installedFor = settings().current().enabled;
    setBridge(Bridge::installing);
    aside().run(
        this,
        [prepared = services().installer()] {
            HookInstaller installer = prepared;
            const Result<void> done = installer.install();
            // The window may be closed before the answer comes; the log has it in any case.
            if (!done)
                NibboLog::log(QStringLiteral("hook install: FAILED: ") + done.error());
            return done;
        },
        [this](const Result<void>& done) {
            const bool isAsChosen = m_installedFor == settings().current().enabled;
            setBridge(done && isAsChosen ? Bridge::installed : Bridge::notInstalled);
            if (!done)
                tellUser(this, QStringLiteral("installFailure"),
                         {say(u"Could not install hook bridge", u"无法安装 hook 桥接"), done.error()},
                         language());
        });
}

void AgentIntegrationPage::setBridge(Bridge bridge)
{
    const bool wasBusy = m_bridge == Bridge::installing;
    const bool hadFocus = m_install->hasFocus();
    m_bridge = bridge;
    m_install->setBusy(bridge == Bridge::installing);
    m_install->setVisible(bridge != Bridge::installed);
    m_installed->setVisible(bridge == Bridge::installed);
    refresh();
    if (const bool isBusy = bridge == Bridge::installing; isBusy != wasBusy)
        Q_EMIT busyChanged(isBusy);
    if (bridge == Bridge::installed && hadFocus)
        m_detect->setFocus();
}

} // namespace nibbo
