#include "settings/view/AgentsPage.h"

#include "agents/ProviderRegistry.h"
#include "hooks/InstallQuestion.h"
#include "sessions/AgentSessionStore.h"
#include "settings/view/AgentFacts.h"
#include "settings/view/Aside.h"
#include "settings/view/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace nibbo {
namespace {

constexpr int symbolSide = 24;
constexpr int visibleBackups = 6;
constexpr int columnGap = 18;

/// A provider's symbol in the colour of the text.
class ProviderSymbol final : public QWidget
{
public:
    explicit ProviderSymbol(const QString& providerId)
        : m_file(theme::providerSymbol(providerId))
    {
        setFixedSize(symbolSide, symbolSide);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(QPoint(0, 0), theme::symbol(m_file, symbolSide, devicePixelRatioF(),
                                                       palette().color(QPalette::WindowText)));
    }

private:
    QString m_file;
};

TextLabel* smallLabel(TextLabel::Tone tone)
{
    auto* const label = new TextLabel(tone);
    label->setFont(theme::scaled(theme::textFont(), 0.92));
    return label;
}

QString homePath(const ProviderSpec& spec)
{
    return QStringLiteral("~/") + spec.configRelativePath;
}

QString setTime(const QString& set)
{
    const QDateTime time = QDateTime::fromString(set.left(15), QStringLiteral("yyyyMMdd-HHmmss"));
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : set;
}

QString fileOf(const HookBackup& backup)
{
    const ProviderSpec* spec = ProviderRegistry::spec(backup.providerId);
    return spec != nullptr ? homePath(*spec) : backup.path;
}

} // namespace

AgentsPage::AgentsPage(const Context& context)
    : SettingsPage(context, {{u"Agents", u"Agent"},
                             {u"Which agents Nibbo watches, and how it is wired into them.",
                              u"Nibbo 关注哪些 agent，以及如何接入它们。"}})
{
    addBridge();
    addProviders();
    addBackups();
    connect(&settings(), &SettingsStore::statusesChanged, this, [this] {
        for (const auto& show : m_rows)
            show();
    });
    // Events come in bursts, and each time a log is read.
    m_soon.setSingleShot(true);
    m_soon.setInterval(1000);
    connect(&m_soon, &QTimer::timeout, this, &AgentsPage::readLastEvents);
    connect(&services().sessions, &AgentSessionStore::sessionsChanged, this, [this] {
        if (isVisible() && !m_soon.isActive())
            m_soon.start();
    });
    onSettings([this](const Settings&) { showBridge(); });
    onLanguage([this] {
        showBridge();
        showBackups();
    });
}

void AgentsPage::addBridge()
{
    SettingsGroup* const place = group({u"Hook bridge", u"Hook 桥接"});
    auto* const body = new QWidget;
    auto* const column = new QVBoxLayout(body);
    column->setContentsMargins(16, 12, 16, 12);
    column->setSpacing(10);
    m_bridge = new TextLabel;
    m_bridge->setObjectName(QStringLiteral("bridgeState"));
    m_install = button("installBridge", {u"Install Bridge…", u"安装桥接…"});
    m_remove = button("removeBridge", {u"Remove Bridge…", u"移除桥接…"});
    QPushButton* const detect = button("runDetection", {u"Run Detection", u"运行检测"});
    column->addWidget(m_bridge);
    column->addWidget(buttons({m_install, m_remove, detect}));
    place->add(body);
    connect(m_install, &QPushButton::clicked, this, &AgentsPage::askInstall);
    connect(m_remove, &QPushButton::clicked, this, &AgentsPage::askRemove);
    connect(detect, &QPushButton::clicked, this, [this] {
        services().runDetection();
        inspect();
    });
}

void AgentsPage::addProviders()
{
    SettingsGroup* const place = group({u"Agents", u"Agent 列表"});
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        auto* const row = new QWidget;
        auto* const line = new QHBoxLayout(row);
        line->setContentsMargins(16, 11, 16, 11);
        line->setSpacing(14);
        auto* const name = new TextLabel;
        name->setFont(theme::heading(1.0));
        name->setText(spec.title);
        TextLabel* const state = smallLabel(TextLabel::Tone::ordinary);
        state->setObjectName(QStringLiteral("state.") + spec.id);
        TextLabel* const facts = smallLabel(TextLabel::Tone::quiet);
        TextLabel* const last = smallLabel(TextLabel::Tone::quiet);
        last->setObjectName(QStringLiteral("last.") + spec.id);
        auto* const texts = new QVBoxLayout;
        texts->setSpacing(2);
        for (TextLabel* each : {name, state, facts, last})
            texts->addWidget(each);
        auto* const toggle = new ToggleSwitch;
        toggle->setObjectName(QStringLiteral("enable.") + spec.id);
        line->addWidget(new ProviderSymbol(spec.id), 0, Qt::AlignTop);
        line->addLayout(texts, 1);
        line->addWidget(toggle, 0, Qt::AlignVCenter);
        name->setBuddy(toggle);
        place->add(row);

        const QString id = spec.id;
        const auto show = [this, id, title = spec.title, state, last] {
            const bool enabled = settings().isEnabled(id);
            const QString status =
                nibbo::title(settings().statuses().value(id, AgentStatus::unknown), language());
            QString wiring;
            bool needsInstall = false;
            if (m_wired.contains(id)) {
                needsInstall = m_wired.value(id) != enabled;
                wiring =
                    m_wired.value(id)
                        ? (enabled ? text(language(), u"wired", u"已接入")
                                   : text(language(), u"still wired; install the bridge to take it out",
                                          u"仍已接入；重新安装桥接即可移除"))
                        : (enabled ? text(language(), u"not wired; install the bridge", u"未接入；请安装桥接")
                                   : text(language(), u"not wired", u"未接入"));
            }
            state->setText(wiring.isEmpty() ? status : status + QStringLiteral(" · ") + wiring);
            state->setTone(needsInstall ? TextLabel::Tone::caution : TextLabel::Tone::ordinary);
            const QString event = m_lastEvents.value(title);
            last->setVisible(!event.isEmpty());
            last->setText(text(language(), u"Last event: %1", u"最近事件：%1").arg(event));
        };
        m_rows.push_back(show);
        onSettings([toggle, id](const Settings& settings) {
            const QSignalBlocker quiet(toggle);
            toggle->setChecked(settings.enabled.value(id));
        });
        onLanguage([this, facts, toggle, title = spec.title, id] {
            if (const AgentFacts* known = agentFacts(id))
                facts->setText(say(known->sees) +
                               (language() == AppLanguage::zh ? QString() : QStringLiteral(" ")) +
                               say(known->answers));
            toggle->setAccessibleName(text(language(), u"Watch %1", u"关注 %1").arg(title));
            toggle->setAccessibleDescription(facts->text());
        });
        connect(toggle, &ToggleSwitch::toggled, this, [this, id](bool on) { settings().setEnabled(id, on); });
    }
}

void AgentsPage::addBackups()
{
    SettingsGroup* const place = group({u"Backups", u"备份"});
    auto* const body = new QWidget;
    auto* const column = new QVBoxLayout(body);
    column->setContentsMargins(16, 12, 16, 12);
    column->setSpacing(10);
    TextLabel* const detail = smallLabel(TextLabel::Tone::quiet);
    m_backupList = new QTreeWidget;
    m_backupList->setObjectName(QStringLiteral("backups"));
    m_backupList->setColumnCount(3);
    m_backupList->setRootIsDecorated(false);
    m_backupList->setUniformRowHeights(true);
    m_backupList->setAlternatingRowColors(false);
    m_backupList->setFixedHeight(m_backupList->fontMetrics().height() * (visibleBackups + 2) + 30);
    m_restore = button("restoreBackup", {u"Restore This File…", u"恢复此文件…"});
    column->addWidget(detail);
    column->addWidget(m_backupList);
    column->addWidget(buttons({m_restore}));
    place->add(body);
    onLanguage([this, detail] {
        detail->setText(text(language(), u"Every file is copied here before Nibbo changes it.",
                             u"Nibbo 修改任何文件之前都会先在这里备份。"));
        m_backupList->setHeaderLabels({text(language(), u"When", u"时间"),
                                       text(language(), u"Agent", u"Agent"),
                                       text(language(), u"File", u"文件")});
        m_backupList->setAccessibleName(text(language(), u"Backups", u"备份"));
    });
    connect(m_backupList, &QTreeWidget::itemSelectionChanged, this,
            [this] { m_restore->setEnabled(!m_backupList->selectedItems().isEmpty()); });
    connect(m_restore, &QPushButton::clicked, this, &AgentsPage::askRestore);
}

void AgentsPage::opened()
{
    inspect();
}

void AgentsPage::inspect()
{
    struct Found
    {
        QMap<QString, bool> wired;
        std::vector<HookBackup> backups;
        QHash<QString, QString> lastEvents;
    };
    aside().run(
        this,
        [installer = services().installer(), lastEvents = services().lastEvents] {
            return Found{installer.status(), installer.backups(), lastEvents()};
        },
        [this](const Found& found) {
            m_wired = found.wired;
            m_backups = found.backups;
            m_lastEvents = found.lastEvents;
            showBridge();
            showBackups();
        });
}

void AgentsPage::readLastEvents()
{
    aside().run(this, services().lastEvents, [this](const QHash<QString, QString>& events) {
        m_lastEvents = events;
        for (const auto& show : m_rows)
            show();
    });
}

void AgentsPage::showBridge()
{
    int enabled = 0;
    int wired = 0;
    bool differs = false;
    for (auto it = m_wired.cbegin(); it != m_wired.cend(); ++it) {
        const bool isEnabled = settings().isEnabled(it.key());
        enabled += isEnabled ? 1 : 0;
        wired += isEnabled && it.value() ? 1 : 0;
        differs |= isEnabled != it.value();
    }
    QString state;
    if (m_wired.isEmpty())
        state = text(language(), u"Looking…", u"正在查看…");
    else if (enabled == 0)
        state = text(language(), u"No agent is switched on.", u"没有启用任何 agent。");
    else
        state = text(language(), u"%1 of %2 agents that are switched on are wired.",
                     u"已启用 %2 个 agent，其中 %1 个已接入。")
                    .arg(wired)
                    .arg(enabled);
    if (differs)
        state += text(language(), u" Install the bridge to bring everything up to date.",
                      u"安装桥接即可全部更新。");
    m_bridge->setText(state);
    m_bridge->setTone(differs ? TextLabel::Tone::caution : TextLabel::Tone::ordinary);
    for (const auto& show : m_rows)
        show();
}

void AgentsPage::showBackups()
{
    m_backupList->clear();
    for (const HookBackup& backup : m_backups) {
        const ProviderSpec* spec = ProviderRegistry::spec(backup.providerId);
        new QTreeWidgetItem(
            m_backupList,
            {setTime(backup.set), spec != nullptr ? spec->title : backup.providerId, fileOf(backup)});
    }
    for (int column = 0; column < m_backupList->columnCount(); ++column) {
        m_backupList->resizeColumnToContents(column);
        m_backupList->setColumnWidth(column, m_backupList->columnWidth(column) + columnGap);
    }
    m_restore->setEnabled(false);
}

void AgentsPage::setBusy(bool busy)
{
    m_install->setEnabled(!busy);
    m_remove->setEnabled(!busy);
    m_restore->setEnabled(!busy && !m_backupList->selectedItems().isEmpty());
}

QString AgentsPage::fileLines(const std::function<bool(const ProviderSpec&)>& which) const
{
    QStringList lines;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (which(spec))
            lines.append(QStringLiteral("  • ") + homePath(spec));
    }
    return lines.join(QLatin1Char('\n'));
}

void AgentsPage::askInstall()
{
    const InstallQuestion question = installQuestion(services().installer(), language());
    ask("askInstall", question.title, question.message, question.agree, [this] {
        work([](HookInstaller& installer) { return installer.install(); },
             {u"Could not install hook bridge", u"无法安装 hook 桥接"});
    });
}

void AgentsPage::askRemove()
{
    const QString files = fileLines([this](const ProviderSpec& spec) { return m_wired.value(spec.id); });
    ask("askRemove", text(language(), u"Remove Nibbo hook bridge?", u"移除 Nibbo hook 桥接？"),
        text(language(), u"Nibbo takes itself out of these files and puts back what it had backed up:\n",
             u"Nibbo 将从以下文件中移除自己，并恢复备份的内容：\n") +
            files +
            text(language(),
                 u"\n\nThe agents are switched off here as well, so that nothing wires them again. Switch "
                 u"them "
                 u"on and install the bridge to have them back.",
                 u"\n\n这里的 agent 也会一并关闭，以免被重新接入。需要时再打开它们并安装桥接即可。"),
        text(language(), u"Remove", u"移除"), [this] {
            // The guardian repairs whatever is switched on and not wired.
            for (const ProviderSpec& spec : ProviderRegistry::all()) {
                if (settings().isEnabled(spec.id))
                    settings().setEnabled(spec.id, false);
            }
            work([](HookInstaller& installer) { return installer.uninstall(); },
                 {u"Could not remove hook bridge", u"无法移除 hook 桥接"});
        });
}

void AgentsPage::askRestore()
{
    const int row = m_backupList->indexOfTopLevelItem(m_backupList->currentItem());
    if (row < 0 || static_cast<std::size_t>(row) >= m_backups.size())
        return;
    const HookBackup backup = m_backups[static_cast<std::size_t>(row)];
    QString message = text(language(), u"%1 becomes what it was at %2. What it holds now is backed up first.",
                           u"%1 将恢复为 %2 时的内容。当前内容会先备份。")
                          .arg(fileOf(backup), setTime(backup.set));
    if (settings().isEnabled(backup.providerId))
        message +=
            text(language(), u"\n\nThis agent is switched on, so Nibbo wires itself in again afterwards.",
                 u"\n\n该 agent 处于启用状态，Nibbo 随后会重新接入。");
    ask("askRestore", text(language(), u"Restore this file?", u"恢复此文件？"), message,
        text(language(), u"Restore", u"恢复"), [this, backup] {
            work([backup](HookInstaller& installer) { return installer.restore(backup); },
                 {u"Could not restore the file", u"无法恢复该文件"});
        });
}

void AgentsPage::work(std::function<Result<void>(HookInstaller&)> change, TextPair failed)
{
    setBusy(true);
    aside().run(
        this,
        [installer = services().installer(), change = std::move(change)] {
            HookInstaller own = installer;
            return change(own);
        },
        [this, failed](const Result<void>& done) {
            setBusy(false);
            if (!done)
                tellFailure(say(failed), done.error());
            inspect();
        });
}

} // namespace nibbo
