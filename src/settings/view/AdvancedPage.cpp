#include "settings/view/AdvancedPage.h"

#include "base/AtomicFile.h"
#include "settings/view/SettingsImport.h"
#include "settings/view/Theme.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace nibbo {
namespace {

const QString settingsFileName = QStringLiteral("nibbo-settings.json");
constexpr int reportRows = 14;

} // namespace

AdvancedPage::AdvancedPage(const Context& context)
    : SettingsPage(context, {{u"Advanced", u"高级"},
                             {u"The settings as a file, and help when something is wrong.",
                              u"设置文件，以及出问题时的帮助。"}})
{
    addFile();
    addTrouble();
    addOnboarding();
    if (const QString version = QCoreApplication::applicationVersion(); !version.isEmpty()) {
        auto* const label = new TextLabel(TextLabel::Tone::quiet);
        label->setText(QStringLiteral("Nibbo ") + version);
        append(label);
    }
}

void AdvancedPage::addFile()
{
    SettingsGroup* const place = group({u"Settings file", u"设置文件"});
    QPushButton* const save = button("exportSettings", {u"Export…", u"导出…"});
    QPushButton* const load = button("importSettings", {u"Import…", u"导入…"});
    QPushButton* const reset = button("resetSettings", {u"Reset…", u"重置…"});
    row(*place, save,
        {{u"Export settings", u"导出设置"},
         {u"Everything but API keys, as one file.", u"除 API 密钥外的全部设置，存为一个文件。"}});
    row(*place, load,
        {{u"Import settings", u"导入设置"},
         {u"You are asked first where it concerns what runs or is sent without asking.",
          u"涉及无需询问即可运行或发送的内容时，会先征求你的同意。"}});
    row(*place, reset,
        {{u"Reset all settings", u"重置所有设置"},
         {u"API keys, models, and Nibbo's place on the screen stay.",
          u"API 密钥、模型和 Nibbo 在屏幕上的位置会保留。"}});
    connect(save, &QPushButton::clicked, this, &AdvancedPage::exportSettings);
    connect(load, &QPushButton::clicked, this, &AdvancedPage::importSettings);
    connect(reset, &QPushButton::clicked, this, &AdvancedPage::askReset);
}

void AdvancedPage::addTrouble()
{
    SettingsGroup* const place = group({u"Troubleshooting", u"故障排查"});
    QPushButton* const logs = button("openLogs", {u"Open Logs", u"打开日志"});
    row(*place, logs,
        {{u"Logs", u"日志"},
         {u"What Nibbo did and what the agents reported.", u"Nibbo 做了什么、agent 报告了什么。"}});
    connect(logs, &QPushButton::clicked, this, &AdvancedPage::openLogs);

    auto* const body = new QWidget;
    auto* const column = new QVBoxLayout(body);
    column->setContentsMargins(0, 0, 0, 0);
    m_doctor = button("runDoctor", {u"Run the Doctor", u"运行诊断"});
    m_copy = button("copyReport", {u"Copy Report", u"复制报告"});
    m_copy->hide();
    m_report = new QPlainTextEdit;
    m_report->setObjectName(QStringLiteral("doctorReport"));
    m_report->setReadOnly(true);
    m_report->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    m_report->setFont(theme::monospace(theme::scaled(theme::textFont(), 0.92)));
    m_report->setTabChangesFocus(true);
    m_report->setFixedHeight(QFontMetrics(m_report->font()).lineSpacing() * reportRows + 16);
    m_report->hide();
    column->addWidget(buttons({m_doctor, m_copy}));
    column->addWidget(m_report);
    SettingRow* const line =
        row(*place, body,
            {{u"Doctor", u"诊断"},
             {u"Checks the socket, the hooks, the agents and your desktop, and says what to do.",
              u"检查 socket、hook、agent 和桌面环境，并给出建议。"}},
            SettingRow::Place::below);
    onLanguage([this, line] {
        m_report->setAccessibleName(text(language(), u"Doctor's report", u"诊断报告"));
        line->control()->setAccessibleName(QString());
    });
    connect(m_doctor, &QPushButton::clicked, this, &AdvancedPage::runDoctor);
    connect(m_copy, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_report->toPlainText()); });
}

void AdvancedPage::addOnboarding()
{
    SettingsGroup* const place = group({u"Onboarding", u"引导"});
    QPushButton* const again = button("runOnboarding", {u"Run Again", u"再次运行"});
    row(*place, again,
        {{u"Run onboarding again", u"重新运行引导"},
         {u"Choose a pet and connect your agents, step by step.", u"一步步选择宠物并连接你的 agent。"}});
    connect(again, &QPushButton::clicked, this, [this] { services().showOnboarding(); });
}

void AdvancedPage::exportSettings()
{
    QFileDialog* const dialog = fileDialog("exportDialog", {u"Export Settings", u"导出设置"});
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setNameFilter(QStringLiteral("JSON (*.json)"));
    dialog->setDefaultSuffix(QStringLiteral("json"));
    dialog->selectFile(settingsFileName);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
        const QByteArray content = QJsonDocument(settings().exportDictionary()).toJson();
        if (const Result<void> written = writeAtomically(path, content); !written)
            tellFailure(text(language(), u"Could not export the settings", u"无法导出设置"), written.error());
    });
    dialog->open();
}

void AdvancedPage::importSettings()
{
    QFileDialog* const dialog = fileDialog("importDialog", {u"Import Settings", u"导入设置"});
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(QStringLiteral("JSON (*.json)"));
    connect(dialog, &QFileDialog::fileSelected, this, &AdvancedPage::takeIn);
    dialog->open();
}

void AdvancedPage::takeIn(const QString& path)
{
    const Result<QJsonObject> imported = readSettingsFile(path, language());
    if (!imported) {
        tellFailure(imported.error(), QDir::toNativeSeparators(path));
        return;
    }
    const QStringList changes = sensitiveChanges(*imported, settings());
    if (changes.isEmpty()) {
        settings().importDictionary(*imported);
        return;
    }
    ask("askImport", text(language(), u"Import these settings?", u"导入这些设置？"),
        text(language(), u"The file changes what runs, or is sent, without asking you:\n\n%1",
             u"该文件会改变哪些内容无需询问即可运行或发送：\n\n%1")
            .arg(QStringLiteral("• ") + changes.join(QStringLiteral("\n• "))),
        text(language(), u"Import", u"导入"),
        [this, dictionary = *imported] { settings().importDictionary(dictionary); });
}

void AdvancedPage::askReset()
{
    ask("askReset", text(language(), u"Reset all settings?", u"重置所有设置？"),
        text(language(),
             u"Every setting, the command lists included, goes back to its default. Hooks that are installed "
             u"stay until "
             u"you install or remove the bridge.",
             u"包括命令列表在内的所有设置都会恢复默认值。已安装的 hook 会保留，直到你重新安装或移除桥接。"),
        text(language(), u"Reset", u"重置"), [this] { settings().resetAll(); });
}

void AdvancedPage::openLogs()
{
    const QString folder = services().paths.logsDirectory();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        tell("logsFolder", text(language(), u"The logs are in this folder", u"日志位于此文件夹"), folder);
}

void AdvancedPage::runDoctor()
{
    m_doctor->setEnabled(false);
    m_copy->hide();
    m_report->setPlainText(text(language(), u"Examining…", u"正在检查…"));
    m_report->show();
    services().runDoctor([page = QPointer<AdvancedPage>(this)](const QString& report) {
        if (!page)
            return;
        page->m_doctor->setEnabled(true);
        page->m_report->setPlainText(report);
        page->m_copy->show();
    });
}

} // namespace nibbo
