#include "settings/view/ApprovalsPage.h"

#include "approval/CommandLists.h"
#include "approval/TrustEngine.h"
#include "settings/view/CommandListEditor.h"
#include "settings/view/Theme.h"

#include <QButtonGroup>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

#include <array>

namespace nibbo {
namespace {

struct ReasonRow
{
    TrustEngine::Rule rule;
    TextPair reason;
};

// %1 is the entry that matched.
constexpr auto reasons = std::to_array<ReasonRow>({
    {TrustEngine::Rule::bypass, {u"Every check is switched off.", u"所有检查都已关闭。"}},
    {TrustEngine::Rule::dangerousEntry,
     {u"It contains “%1”, which is dangerous.", u"其中包含危险片段“%1”。"}},
    {TrustEngine::Rule::manualMode, {u"The mode asks every time.", u"当前模式每次都询问。"}},
    {TrustEngine::Rule::trustedEntry, {u"It begins with “%1”, which you trust.", u"它以可信的“%1”开头。"}},
    {TrustEngine::Rule::notTrusted, {u"It begins with nothing that you trust.", u"它不以任何可信命令开头。"}},
    {TrustEngine::Rule::automaticMode,
     {u"The mode allows everything that is not dangerous.", u"当前模式放行一切不危险的命令。"}},
});

TextPair verdict(TrustEngine::Decision decision)
{
    switch (decision) {
    case TrustEngine::Decision::allow:
        return {u"Runs at once.", u"立即放行。"};
    case TrustEngine::Decision::block:
        return {u"Is denied.", u"会被拒绝。"};
    case TrustEngine::Decision::ask:
        break;
    }
    return {u"Nibbo asks you.", u"Nibbo 会询问你。"};
}

} // namespace

ApprovalsPage::ApprovalsPage(const Context& context)
    : SettingsPage(context, {{u"Approvals", u"授权"},
                             {u"Which commands run at once, and about which Nibbo asks you first.",
                              u"哪些命令立即运行，哪些先由 Nibbo 询问你。"}})
{
    addModes();
    addList("trustedCommands", {u"Trusted commands", u"可信命令"},
            {{u"", u""},
             {u"In the mode “Smart”, a command that begins with one of these runs at once.",
              u"在“Smart 保守”模式下，以其中之一开头的命令会立即运行。"}},
            &Settings::trustedCommands, defaultTrustedCommands);
    addList("dangerousCommands", {u"Dangerous commands", u"危险命令"},
            {{u"", u""},
             {u"A command with one of these anywhere in it always asks, whatever the mode.",
              u"只要命令中出现其中之一，无论哪种模式都会询问。"}},
            &Settings::dangerousCommands, defaultDangerousCommands);
    addTrial();
    addBypass();
}

void ApprovalsPage::addModes()
{
    SettingsGroup* const modes = group({u"Mode", u"模式"});
    auto* const choices = new QButtonGroup(this);
    for (const EnumRow<ApprovalMode>& each : rowsOf(ApprovalMode{})) {
        auto* const radio = new QRadioButton;
        radio->setObjectName(QStringLiteral("approvalMode.") + QString::fromUtf16(each.raw));
        choices->addButton(radio, static_cast<int>(each.value));
        auto* const line = new SettingRow(radio, SettingRow::Place::before);
        modes->add(line);
        onLanguage([this, line, mode = each.value] {
            line->setTexts(nibbo::title(mode, language()), detail(mode, language()));
        });
        // It is switched on from a card; here it can be seen and left.
        if (each.value == ApprovalMode::allowAll)
            onSettings([line](const Settings& settings) {
                line->setVisible(settings.approvalMode == ApprovalMode::allowAll);
            });
    }
    onSettings([choices](const Settings& settings) {
        choices->button(static_cast<int>(settings.approvalMode))->setChecked(true);
    });
    connect(choices, &QButtonGroup::idClicked, this, [this](int id) {
        settings().change([&](Settings& settings) { settings.approvalMode = static_cast<ApprovalMode>(id); });
    });
}

void ApprovalsPage::addList(const char* name, TextPair heading, Wording wording, QStringList Settings::*list,
                            QStringList (*defaults)())
{
    SettingsGroup* const place = group(heading);
    auto* const editor = new CommandListEditor(QLatin1String(name), defaults());
    row(*place, editor, wording, SettingRow::Place::below);
    onLanguage([this, editor, heading] {
        editor->setAccessibleName(say(heading));
        editor->setLanguage(language());
    });
    onSettings([editor, list](const Settings& settings) { editor->setCommands(settings.*list); });
    connect(editor, &CommandListEditor::edited, this, [this, list](const QStringList& commands) {
        settings().change([&](Settings& settings) { settings.*list = commands; });
    });
}

void ApprovalsPage::addTrial()
{
    SettingsGroup* const place = group({u"Try a command", u"试一条命令"});
    auto* const holder = new QWidget;
    auto* const column = new QVBoxLayout(holder);
    column->setContentsMargins(0, 0, 0, 0);
    auto* const field = new QLineEdit;
    field->setObjectName(QStringLiteral("trial.field"));
    field->setFont(theme::monospace(theme::textFont()));
    field->setClearButtonEnabled(true);
    auto* const answer = new TextLabel;
    answer->setObjectName(QStringLiteral("trial.answer"));
    column->addWidget(field);
    column->addWidget(answer);
    SettingRow* const line = row(*place, holder,
                                 {{u"", u""},
                                  {u"Nothing is run. You only see what would be decided, and why.",
                                   u"不会运行任何东西，只显示会如何决定以及原因。"}},
                                 SettingRow::Place::below);
    holder->setFocusProxy(field);
    const auto decide = [this, field, answer] {
        const auto explained = TrustEngine::explain(field->text(), settings().current().trustPolicy());
        QString reason;
        for (const ReasonRow& each : reasons) {
            if (each.rule == explained.rule)
                reason = say(each.reason);
        }
        if (reason.contains(QLatin1String("%1")))
            reason = reason.arg(explained.entry);
        answer->setVisible(!field->text().trimmed().isEmpty());
        answer->setText(say(verdict(explained.decision)) + QLatin1Char(' ') + reason);
        answer->setTone(explained.decision == TrustEngine::Decision::allow ? TextLabel::Tone::ordinary
                                                                           : TextLabel::Tone::caution);
        field->setAccessibleDescription(answer->text());
    };
    onLanguage([this, field, line] {
        line->control()->setAccessibleDescription(QString());
        field->setAccessibleName(text(language(), u"Command to try", u"要试的命令"));
        field->setPlaceholderText(text(language(), u"e.g. git push --force", u"例如 git push --force"));
    });
    onSettings([decide](const Settings&) { decide(); });
    onLanguage(decide);
    connect(field, &QLineEdit::textChanged, this, decide);
}

void ApprovalsPage::addBypass()
{
    SettingsGroup* const place = group({u"Bypass", u"绕过检查"});
    auto* const bypass = new ToggleSwitch;
    bypass->setObjectName(QStringLiteral("bypassRiskCheck"));
    row(*place, bypass,
        {{u"Allow everything without asking", u"不询问，全部放行"},
         {u"Dangerous commands too. Nothing an agent wants to run is held back.",
          u"包括危险命令。agent 想运行的任何东西都不会被拦下。"}});
    TextLabel* const warning =
        note({u"Every check is off: agents may run any command at once, dangerous ones included.",
              u"所有检查都已关闭：agent 可以立即运行任何命令，包括危险命令。"},
             TextLabel::Tone::caution);
    const auto show = [bypass, warning](const Settings& settings) {
        const QSignalBlocker quiet(bypass);
        bypass->setChecked(settings.bypassRiskCheck);
        warning->setVisible(settings.bypassRiskCheck);
    };
    onSettings(show);
    const auto put = [this](bool on) {
        settings().change([&](Settings& settings) { settings.bypassRiskCheck = on; });
    };
    connect(bypass, &ToggleSwitch::toggled, this, [this, show, put](bool on) {
        if (!on) {
            put(false);
            return;
        }
        show(settings().current());
        ask("askBypass", text(language(), u"Allow every command without asking?", u"不询问就放行所有命令？"),
            text(language(),
                 u"Agents may then run anything at once: sudo, rm -rf, whatever they were talked into. Nibbo "
                 u"no longer asks about dangerous commands.",
                 u"之后 agent 可以立即运行任何东西：sudo、rm -rf，或任何被诱导执行的命令。Nibbo "
                 u"不再询问危险命令。"),
            text(language(), u"Allow Everything", u"全部放行"), [put] { put(true); });
    });
}

} // namespace nibbo
