// What the pages do beyond their plain controls.
#include "approval/CommandLists.h"
#include "settings/SettingsWindowFixture.h"
#include "settings/view/SettingsImport.h"
#include "settings/view/SettingsPage.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QFileDialog>
#include <QImage>
#include <QJsonArray>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTreeWidget>
#include <QUrl>

namespace nibbo::test {
namespace {

class SettingsPagesTest : public SettingsWindowFixture
{
protected:
    void SetUp() override { controller.show(); }

    QString text(const char* label) { return part<QLabel>(label).text(); }
    void type(const char* field, const QString& words)
    {
        auto& line = part<QLineEdit>(field);
        line.setText(words);
        Q_EMIT line.textEdited(words);
    }
    QString write(const QString& name, const QByteArray& content)
    {
        const QString path = home.filePath(name);
        EXPECT_TRUE(writeAtomically(path, content));
        return path;
    }
    QByteArray read(const QString& path)
    {
        const Result<QByteArray> content = readWholeFile(path);
        return content ? *content : QByteArray("(unreadable)");
    }
    /// What a file dialog of that name gives when the user picks the path.
    void pick(const char* opener, const char* dialog, const QString& path)
    {
        click(opener);
        auto* const open = controller.window()->findChild<QFileDialog*>(QLatin1String(dialog));
        ASSERT_NE(open, nullptr) << dialog;
        EXPECT_TRUE(open->isVisible());
        Q_EMIT open->fileSelected(path);
        open->close();
        ASSERT_TRUE(
            waitFor([&] { return !controller.window()->findChild<QFileDialog*>(QLatin1String(dialog)); }));
    }
};

QStringList entries(QListWidget& list)
{
    QStringList all;
    for (int i = 0; i < list.count(); ++i)
        all.append(list.item(i)->text());
    return all;
}

// ---- Approvals

TEST_F(SettingsPagesTest, commandListIsAddedToEditedRemovedFromAndUndone)
{
    const QStringList first = defaultTrustedCommands();
    auto& list = part<QListWidget>("trustedCommands.list");
    EXPECT_EQ(entries(list), first);
    EXPECT_FALSE(part<QAbstractButton>("trustedCommands.undo").isEnabled());
    EXPECT_FALSE(part<QAbstractButton>("trustedCommands.restore").isEnabled());

    part<QLineEdit>("trustedCommands.field").setText(QStringLiteral("make "));
    click("trustedCommands.add");
    const QStringList added = first + QStringList{QStringLiteral("make ")};
    EXPECT_EQ(settings.current().trustedCommands, added) << "the blank at the end means something";
    EXPECT_EQ(stored().value(QStringLiteral("settings.trustedCommands")),
              QJsonValue(QJsonArray::fromStringList(added)));
    EXPECT_TRUE(part<QLineEdit>("trustedCommands.field").text().isEmpty());

    part<QLineEdit>("trustedCommands.field").setText(QStringLiteral("make "));
    click("trustedCommands.add");
    EXPECT_EQ(settings.current().trustedCommands, added) << "not twice";

    list.item(0)->setText(QStringLiteral("git log"));
    EXPECT_EQ(settings.current().trustedCommands.first(), QStringLiteral("git log"));
    list.item(1)->setText(QString());
    EXPECT_EQ(settings.current().trustedCommands.at(1), first.at(1)) << "an entry cannot be made empty";

    list.clearSelection();
    list.setCurrentRow(2);
    click("trustedCommands.remove");
    EXPECT_FALSE(settings.current().trustedCommands.contains(first.at(2)));

    click("trustedCommands.undo");
    EXPECT_TRUE(settings.current().trustedCommands.contains(first.at(2)));
    click("trustedCommands.restore");
    EXPECT_EQ(settings.current().trustedCommands, first);
    click("trustedCommands.undo");
    click("trustedCommands.undo");
    EXPECT_EQ(settings.current().trustedCommands, added);
    click("trustedCommands.undo");
    EXPECT_EQ(settings.current().trustedCommands, first);
    EXPECT_EQ(entries(list), first);
    EXPECT_FALSE(part<QAbstractButton>("trustedCommands.undo").isEnabled());
    EXPECT_EQ(settings.current().dangerousCommands, defaultDangerousCommands());
}

TEST_F(SettingsPagesTest, listsFollowChangesFromOutside)
{
    settings.change(
        [](Settings& edited) { edited.dangerousCommands = QStringList{QStringLiteral("dd if=")}; });
    EXPECT_EQ(entries(part<QListWidget>("dangerousCommands.list")), QStringList{QStringLiteral("dd if=")});
}

struct TrialRow
{
    ApprovalMode mode;
    const char* command;
    const char* verdict;
    const char* because;
};

TEST_F(SettingsPagesTest, triedCommandTellsWhatWouldBeDecidedAndWhy)
{
    controller.show(SettingsPageId::approvals);
    const std::vector<TrialRow> rows{
        {ApprovalMode::smart, "git status -s", "Runs at once.", "“git status”"},
        {ApprovalMode::smart, "make", "Nibbo asks you.", "nothing that you trust"},
        {ApprovalMode::fullAuto, "make", "Runs at once.", "not dangerous"},
        {ApprovalMode::fullAuto, "SUDO make", "Nibbo asks you.", "“sudo”"},
        {ApprovalMode::manual, "git status", "Nibbo asks you.", "every time"},
    };
    for (const TrialRow& row : rows) {
        settings.change([&](Settings& edited) { edited.approvalMode = row.mode; });
        type("trial.field", QString::fromUtf8(row.command));
        EXPECT_TRUE(text("trial.answer").startsWith(QString::fromUtf8(row.verdict))) << row.command;
        EXPECT_TRUE(text("trial.answer").contains(QString::fromUtf8(row.because)))
            << row.command << ": " << text("trial.answer").toStdString();
    }
    settings.change([](Settings& edited) { edited.bypassRiskCheck = true; });
    EXPECT_TRUE(text("trial.answer").contains(QStringLiteral("switched off"))) << "it follows the settings";
    settings.change([](Settings& edited) {
        edited.bypassRiskCheck = false;
        edited.dangerousCommands = QStringList{QStringLiteral("%1 %2")};
    });
    type("trial.field", QStringLiteral("echo %1 %2"));
    EXPECT_TRUE(text("trial.answer").contains(QStringLiteral("“%1 %2”"))) << "entries are shown as they are";
}

// ---- Agents

constexpr auto claudeFile = ".claude/settings.json";

TEST_F(SettingsPagesTest, bridgeIsInstalledRemovedAndAFileRestored)
{
    const QByteArray original = "{\n  \"model\" : \"opus\"\n}\n";
    const QString file = write(QString::fromLatin1(claudeFile), original);
    for (const char* id : {"codex", "gemini", "opencode"})
        settings.setEnabled(QString::fromLatin1(id), false);
    settings.setEnabled(QStringLiteral("cursor"), true);
    controller.show(SettingsPageId::agents);

    click("installBridge");
    QMessageBox* const install = question("askInstall");
    ASSERT_NE(install, nullptr);
    EXPECT_EQ(install->text(), QStringLiteral("Install Nibbo hook bridge?"));
    EXPECT_EQ(install->informativeText(),
              QStringLiteral(
                  "This backs up, then modifies the configs for your enabled agents:\n"
                  "  • ~/.claude/settings.json\n"
                  "  • ~/.cursor/hooks.json\n\n"
                  "A timestamped backup is saved under Nibbo's Application Support → Backups, and you can "
                  "remove the bridge anytime from Settings. Your CLIs keep working even when Nibbo is "
                  "closed (the bridge fails open)."));
    answer("askInstall", "cancel");
    EXPECT_EQ(read(file), original);

    click("installBridge");
    answer("askInstall", "agree");
    ASSERT_TRUE(waitFor([&] { return text("state.claude").contains(QStringLiteral("· wired")); }))
        << text("state.claude").toStdString();
    EXPECT_TRUE(read(file).contains("nibbo-bridge"));
    EXPECT_EQ(text("bridgeState"), QStringLiteral("2 of 2 agents that are switched on are wired."));

    auto& backups = part<QTreeWidget>("backups");
    ASSERT_TRUE(waitFor([&] { return backups.topLevelItemCount() == 1; }));
    EXPECT_EQ(backups.topLevelItem(0)->text(1), QStringLiteral("Claude"));
    EXPECT_FALSE(part<QAbstractButton>("restoreBackup").isEnabled());
    backups.setCurrentItem(backups.topLevelItem(0));
    click("restoreBackup");
    answer("askRestore", "agree");
    ASSERT_TRUE(waitFor([&] { return read(file) == original; }));
    ASSERT_TRUE(waitFor([&] { return text("state.claude").contains(QStringLiteral("not wired")); }));

    click("installBridge");
    answer("askInstall", "agree");
    ASSERT_TRUE(waitFor([&] { return text("state.claude").contains(QStringLiteral("· wired")); }));
    click("removeBridge");
    ASSERT_NE(question("askRemove"), nullptr);
    EXPECT_EQ(question("askRemove")->text(), QStringLiteral("Remove Nibbo hook bridge?"));
    EXPECT_TRUE(
        question("askRemove")->informativeText().contains(QStringLiteral("\n  • ~/.claude/settings.json\n")));
    EXPECT_FALSE(question("askRemove")->informativeText().contains(QStringLiteral(".codex")));
    answer("askRemove", "agree");
    ASSERT_TRUE(waitFor([&] { return read(file) == original; }));
    EXPECT_FALSE(settings.isEnabled(QStringLiteral("claude"))) << "or the guardian would wire it again";
    EXPECT_FALSE(settings.isEnabled(QStringLiteral("cursor")));
    EXPECT_TRUE(waitFor([&] { return text("bridgeState") == QStringLiteral("No agent is switched on."); }));
}

TEST_F(SettingsPagesTest, failedInstallIsToldAndLeavesEverythingUsable)
{
    // The agent's folder is a file.
    write(QStringLiteral(".claude"), "in the way");
    controller.show(SettingsPageId::agents);
    click("installBridge");
    answer("askInstall", "agree");
    ASSERT_TRUE(waitFor([&] { return question("failure") != nullptr; }));
    EXPECT_EQ(question("failure")->text(), QStringLiteral("Could not install hook bridge"));
    EXPECT_FALSE(question("failure")->informativeText().isEmpty());
    answer("failure", "ok");
    EXPECT_TRUE(part<QAbstractButton>("installBridge").isEnabled());
}

TEST_F(SettingsPagesTest, agentsShowStatusLastEventAndDetection)
{
    controller.show(SettingsPageId::agents);
    EXPECT_TRUE(text("state.kimi").startsWith(QStringLiteral("Not looked for yet")));
    settings.setStatus(QStringLiteral("kimi"), AgentStatus::notFound);
    EXPECT_TRUE(text("state.kimi").startsWith(QStringLiteral("Not found on this computer")));
    EXPECT_TRUE(
        waitFor([&] { return text("last.claude") == QStringLiteral("Last event: 2026-11-21 10:42:07"); }));
    EXPECT_FALSE(part<QLabel>("last.codex").isVisible());
    click("runDetection");
    EXPECT_EQ(detections, 1);
}

// ---- Sessions

TEST_F(SettingsPagesTest, sessionsFollowTheStoreTheWaitingOnesMarked)
{
    sessions.start();
    controller.show(SettingsPageId::sessions);
    auto& list = part<QListView>("sessionList");
    EXPECT_TRUE(part<QLabel>("noSessions").isVisible());
    EXPECT_FALSE(list.isVisible());

    AgentEvent working;
    working.type = AgentEventType::thinking;
    working.provider = AgentProvider(QStringLiteral("codex"));
    working.sessionId = QStringLiteral("b");
    working.cwd = QStringLiteral("/home/me/parser");
    working.say = QStringLiteral("Reading <b>the</b> code");
    sessions.apply(working);
    AgentEvent asking;
    asking.type = AgentEventType::approvalRequired;
    asking.sessionId = QStringLiteral("a");
    asking.command = QStringLiteral("rm -rf build");
    sessions.apply(asking);
    ASSERT_TRUE(waitFor([&] { return list.model()->rowCount() == 2; }));
    EXPECT_TRUE(list.isVisible());

    const auto accessible = [&](int row) {
        return list.model()->index(row, 0).data(Qt::AccessibleTextRole).toString();
    };
    EXPECT_TRUE(accessible(0).startsWith(QStringLiteral("Claude"))) << "who waits comes first";
    EXPECT_TRUE(accessible(0).contains(QStringLiteral("Waiting for your approval.")));
    EXPECT_EQ(accessible(1), QStringLiteral("Codex, parser, Thinking…, Reading <b>the</b> code, 0 s"));
    EXPECT_TRUE(
        list.model()->index(1, 0).data(Qt::ToolTipRole).toString().contains(QStringLiteral("&lt;b&gt;")))
        << "an agent's words are no markup";

    list.setCurrentIndex(list.model()->index(1, 0));
    sessions.resolveApproval(asking.id, true);
    AgentEvent stopped = asking;
    stopped.type = AgentEventType::agentStopped;
    stopped.command.reset();
    sessions.apply(stopped);
    ASSERT_TRUE(waitFor([&] { return list.model()->rowCount() == 1; }));
    EXPECT_TRUE(list.currentIndex().isValid()) << "the chosen session stays chosen when others go";
    language(AppLanguage::zh);
    EXPECT_TRUE(accessible(0).contains(QStringLiteral("思考中…")));
}

// ---- Pet

QByteArray picture()
{
    return R"(<svg xmlns="http://www.w3.org/2000/svg" width="40" height="40"><circle cx="20" cy="20" r="18" fill="#26a"/></svg>)";
}

/// As the desktop does it: whoever takes drops, from the widget under the pointer upwards.
bool drop(QWidget& onto, const QStringList& paths)
{
    QWidget* taker = &onto;
    while (taker != nullptr && !taker->acceptDrops())
        taker = taker->parentWidget();
    if (taker == nullptr)
        return false;
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(taker, &enter);
    QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(taker, &event);
    return enter.isAccepted() && event.isAccepted();
}

TEST_F(SettingsPagesTest, droppedPackIsImportedShownChosenAndDeleted)
{
    controller.show(SettingsPageId::pet);
    write(QStringLiteral("incoming/images/idle.svg"), picture());
    write(QStringLiteral("incoming/pack.json"), R"({"name":"Blue <i>Dot</i>","author":"Me"})");
    auto& gallery = part<QListWidget>("petGallery");
    ASSERT_TRUE(waitFor([&] { return gallery.count() > 0; }));
    const int before = gallery.count();
    EXPECT_FALSE(part<QAbstractButton>("deletePack").isEnabled());

    ASSERT_TRUE(drop(*gallery.viewport(), {home.filePath(QStringLiteral("incoming"))}));
    ASSERT_TRUE(waitFor([&] { return gallery.count() == before + 1 && !gallery.selectedItems().isEmpty(); }));
    EXPECT_EQ(settings.current().petSource, PetSource::pack);
    const QString folder = settings.current().effectivePackPath().value_or(QString());
    EXPECT_TRUE(QFile::exists(folder + QStringLiteral("/images/idle.svg")));
    ASSERT_TRUE(waitFor([&] {
        return !gallery.selectedItems().isEmpty() &&
               gallery.selectedItems().first()->text() == QStringLiteral("Blue <i>Dot</i>");
    }));
    EXPECT_FALSE(gallery.selectedItems().first()->data(Qt::UserRole + 1).value<QImage>().isNull());

    click("deletePack");
    EXPECT_EQ(question("askDeletePack")->textFormat(), Qt::PlainText);
    answer("askDeletePack", "agree");
    ASSERT_TRUE(waitFor([&] { return gallery.count() == before; }));
    EXPECT_FALSE(QFile::exists(folder));
    EXPECT_EQ(settings.current().petSource, PetSource::official);
    EXPECT_EQ(settings.current().activePackPath, std::nullopt);
}

TEST_F(SettingsPagesTest, imageIsChosenAndABadPackToldAbout)
{
    controller.show(SettingsPageId::pet);
    pick("chooseImage", "chooseImageDialog", write(QStringLiteral("me.svg"), picture()));
    ASSERT_TRUE(waitFor([&] { return settings.current().effectiveCustomPetPath().has_value(); }));
    EXPECT_NE(*settings.current().customPetPath, home.filePath(QStringLiteral("me.svg"))) << "a copy is kept";
    auto& gallery = part<QListWidget>("petGallery");
    ASSERT_TRUE(waitFor([&] {
        return !gallery.selectedItems().isEmpty() &&
               gallery.selectedItems().first()->text() == QStringLiteral("Custom Image");
    }));

    pick("importPack", "choosePackDialog", write(QStringLiteral("bad.zip"), "no archive"));
    ASSERT_TRUE(waitFor([&] { return question("failure") != nullptr; }));
    EXPECT_EQ(question("failure")->text(), QStringLiteral("Could not import the pet pack"));
    answer("failure", "ok");
    EXPECT_EQ(settings.current().petSource, PetSource::custom);
}

TEST_F(SettingsPagesTest, petsAreChosenByTheirPictures)
{
    controller.show(SettingsPageId::pet);
    auto& gallery = part<QListWidget>("petGallery");
    ASSERT_TRUE(waitFor([&] { return gallery.count() >= 2; }));
    EXPECT_EQ(gallery.currentItem()->text(), QStringLiteral("Official Nibbo"));
    language(AppLanguage::zh);
    EXPECT_EQ(gallery.currentItem()->text(), QStringLiteral("官方 Nibbo"));
    language(AppLanguage::en);
    gallery.setCurrentRow(1);
    EXPECT_EQ(settings.current().petSource, PetSource::pack);
    EXPECT_EQ(settings.current().activePackPath, gallery.item(1)->data(Qt::UserRole).toString().mid(5));
    EXPECT_FALSE(part<QAbstractButton>("deletePack").isEnabled()) << "what comes with the program stays";
    settings.change([](Settings& edited) { edited.petSource = PetSource::official; });
    EXPECT_EQ(gallery.selectedItems().first()->text(), QStringLiteral("Official Nibbo"));
    settings.change([](Settings& edited) {
        edited.petSource = PetSource::pack;
        edited.activePackPath = QStringLiteral("/gone");
    });
    EXPECT_TRUE(part<QLabel>("petMissing").isVisible());
}

TEST_F(SettingsPagesTest, templateIsSavedWhereTheUserSays)
{
    controller.show(SettingsPageId::pet);
    pick("saveTemplate", "saveTemplateDialog", home.path());
    ASSERT_TRUE(waitFor([&] { return question("templateSaved") != nullptr; }));
    EXPECT_TRUE(QFile::exists(question("templateSaved")->informativeText() + QStringLiteral("/pack.json")));
}

// ---- Summaries

TEST_F(SettingsPagesTest, keyIsStoredHiddenAndRemoved)
{
    language(AppLanguage::zh);
    language(AppLanguage::en);
    EXPECT_EQ(secrets.reads, 0) << "the keyring may ask to be unlocked: not before somebody looks";
    controller.show(SettingsPageId::summaries);
    EXPECT_EQ(text("keyState"), QStringLiteral("No key is stored."));
    EXPECT_EQ(part<QLineEdit>("apiKey").echoMode(), QLineEdit::Password);
    EXPECT_FALSE(part<QAbstractButton>("saveKey").isEnabled());
    type("apiKey", QStringLiteral(" sk-secret \n"));
    click("saveKey");
    EXPECT_EQ(secrets.entries.at(QStringLiteral("apiKey.anthropic")), QStringLiteral("sk-secret"));
    EXPECT_TRUE(part<QLineEdit>("apiKey").text().isEmpty()) << "a stored key is not shown again";
    EXPECT_EQ(text("keyState"), QStringLiteral("A key is stored."));

    settings.change([](Settings& edited) { edited.summaryProvider = SummaryProvider::openai; });
    EXPECT_EQ(text("keyState"), QStringLiteral("No key is stored."));
    settings.change([](Settings& edited) { edited.summaryProvider = SummaryProvider::anthropic; });
    secrets.failure = QStringLiteral("The keyring is locked.");
    click("removeKey");
    EXPECT_TRUE(text("keyState").contains(QStringLiteral("The keyring is locked.")));
    type("apiKey", QStringLiteral("sk-other"));
    click("saveKey");
    EXPECT_EQ(part<QLineEdit>("apiKey").text(), QStringLiteral("sk-other"))
        << "what was not stored is not lost";
    secrets.failure.reset();
    controller.show(SettingsPageId::general);
    controller.show(SettingsPageId::summaries);
    EXPECT_EQ(text("keyState"), QStringLiteral("A key is stored."));
    click("removeKey");
    EXPECT_TRUE(secrets.entries.empty());
    EXPECT_EQ(text("keyState"), QStringLiteral("No key is stored."));
    EXPECT_FALSE(QString::fromUtf8(QJsonDocument(stored()).toJson()).contains(QStringLiteral("sk-")));
}

TEST_F(SettingsPagesTest, modelAndAddressBelongToTheirProvider)
{
    controller.show(SettingsPageId::summaries);
    EXPECT_FALSE(part<QLineEdit>("summaryBaseURL").isVisible());
    type("summaryModel", QStringLiteral(" big-model "));
    EXPECT_EQ(stored().value(QStringLiteral("summary.model.anthropic")),
              QJsonValue(QStringLiteral("big-model")));
    settings.change([](Settings& edited) { edited.summaryProvider = SummaryProvider::custom; });
    EXPECT_TRUE(part<QLineEdit>("summaryModel").text().isEmpty());
    EXPECT_TRUE(part<QLineEdit>("summaryBaseURL").isVisible());

    const std::vector<std::pair<const char*, bool>> addresses{{"https://models.example/v1", false},
                                                              {"http://localhost:8080/v1", false},
                                                              {"http://127.0.0.1/v1", false},
                                                              {"http://models.example/v1", true},
                                                              {"models", true},
                                                              {"", false}};
    for (const auto& [address, warns] : addresses) {
        type("summaryBaseURL", QString::fromLatin1(address));
        EXPECT_EQ(settings.summaryBaseURL(SummaryProvider::custom), QString::fromLatin1(address));
        EXPECT_EQ(part<QLabel>("summaryBaseURL.warning").isVisible(), warns) << address;
    }
    settings.setSummaryBaseURL(SummaryProvider::custom, QStringLiteral("https://other.example"));
    EXPECT_EQ(part<QLineEdit>("summaryBaseURL").text(), QStringLiteral("https://other.example"));
}

TEST_F(SettingsPagesTest, testRequestShowsTheRealError)
{
    controller.show(SettingsPageId::summaries);
    secrets.failure = QStringLiteral("The keyring is locked.");
    click("testSummary");
    ASSERT_TRUE(waitFor([&] { return part<QAbstractButton>("testSummary").isEnabled(); }));
    EXPECT_TRUE(text("testAnswer").contains(QStringLiteral("The keyring is locked.")))
        << text("testAnswer").toStdString();
}

// ---- Advanced

TEST_F(SettingsPagesTest, exportAndImportGoRound)
{
    settings.change([](Settings& edited) { edited.bubbleStyle = BubbleStyle::large; });
    const QString file = home.filePath(QStringLiteral("nibbo-settings.json"));
    pick("exportSettings", "exportDialog", file);
    const QJsonObject exported = QJsonDocument::fromJson(read(file)).object();
    EXPECT_EQ(exported, settings.exportDictionary());
    settings.change([](Settings& edited) { edited.bubbleStyle = BubbleStyle::compact; });
    pick("importSettings", "importDialog", file);
    EXPECT_EQ(settings.current().bubbleStyle, BubbleStyle::large) << "harmless changes need no question";
    EXPECT_EQ(question("askImport"), nullptr);

    pick("exportSettings", "exportDialog", QStringLiteral("/proc/none/settings.json"));
    ASSERT_NE(question("failure"), nullptr);
    EXPECT_EQ(question("failure")->text(), QStringLiteral("Could not export the settings"));
}

TEST_F(SettingsPagesTest, unreadableImportsChangeNothingAndSayWhy)
{
    const Settings before = settings.current();
    const std::vector<std::pair<QString, QString>> faulty{
        {home.filePath(QStringLiteral("none.json")), QStringLiteral("Could not read settings file")},
        {write(QStringLiteral("list.json"), "[1, 2]"),
         QStringLiteral("The file is not a valid Nibbo settings JSON.")},
        {write(QStringLiteral("torn.json"), "{\"approvalMode\": \"full"),
         QStringLiteral("The file is not a valid Nibbo settings JSON.")},
        {write(QStringLiteral("empty.json"), ""),
         QStringLiteral("The file is not a valid Nibbo settings JSON.")}};
    for (const auto& [path, message] : faulty) {
        pick("importSettings", "importDialog", path);
        ASSERT_NE(question("failure"), nullptr) << path.toStdString();
        EXPECT_EQ(question("failure")->text(), message);
        answer("failure", "ok");
        EXPECT_EQ(settings.current(), before);
    }
}

TEST_F(SettingsPagesTest, importAsksBeforeItChangesWhatRunsOrIsSent)
{
    const QString file =
        write(QStringLiteral("in.json"), R"({"approvalMode":"fullAuto","petSizeScale":1.5})");
    pick("importSettings", "importDialog", file);
    ASSERT_NE(question("askImport"), nullptr);
    EXPECT_TRUE(
        question("askImport")->informativeText().contains(QStringLiteral("Approval mode: Mostly Auto")));
    EXPECT_EQ(settings.current().petSizeScale, 1.0) << "nothing before the answer";
    answer("askImport", "cancel");
    EXPECT_EQ(settings.current().petSizeScale, 1.0);
    EXPECT_EQ(settings.current().approvalMode, ApprovalMode::manual);
    pick("importSettings", "importDialog", file);
    answer("askImport", "agree");
    EXPECT_EQ(settings.current().approvalMode, ApprovalMode::fullAuto);
    EXPECT_EQ(settings.current().petSizeScale, 1.5);
}

struct SensitiveRow
{
    const char* file;
    /// Parts of the one line; none means that nothing is asked.
    std::vector<const char*> parts;
};

TEST_F(SettingsPagesTest, sensitiveChangesAreNamed)
{
    const std::vector<SensitiveRow> rows{
        {R"({"petSizeScale":2,"language":"zh"})", {}},
        {R"({"approvalMode":"manual","bypassRiskCheck":false})", {}},
        {R"({"approvalMode":"everything"})", {}},
        {R"({"bypassRiskCheck":1})", {}},
        {R"({"bypassRiskCheck":true})", {"without asking"}},
        {R"({"trustedCommands":["git status","git diff","npm install","pnpm install","bun install","rm -rf"]})",
         {"Trusted commands", "adds “rm -rf”"}},
        {R"({"trustedCommands":["bun install","git status","git diff","npm install","pnpm install"]})", {}},
        {R"({"trustedCommands":["a", 3]})", {}},
        {R"({"dangerousCommands":["rm -rf"]})", {"Dangerous commands", "removes “sudo”"}},
        {R"({"trustedCommands":["git status","git diff","npm install","pnpm install","bun install","a\n\nb\u202e"]})",
         {"adds “a ⏎", "<U+202E>"}},
        {R"({"smartSummary":true})", {"sent to the provider"}},
        {R"({"summaryProvider":"custom"})", {"Custom"}},
        {R"({"summaryBaseURLs":{"custom":" https://evil.example/v1 ","openai":"https://x.example"}})",
         {"https://evil.example/v1"}},
        {R"({"summaryBaseURLs":{"openai":"https://x.example"}})", {}},
    };
    for (const SensitiveRow& row : rows) {
        const QJsonObject imported = QJsonDocument::fromJson(row.file).object();
        ASSERT_FALSE(imported.isEmpty()) << row.file;
        const QStringList lines = sensitiveChanges(imported, settings);
        EXPECT_EQ(lines.size(), row.parts.empty() ? 0 : 1) << row.file;
        for (const char* part : row.parts) {
            EXPECT_TRUE(lines.value(0).contains(QString::fromUtf8(part)))
                << row.file << ": " << lines.value(0).toStdString();
        }
    }
}

TEST_F(SettingsPagesTest, importOnlyTakesWhatTheQuestionCouldSee)
{
    // Whatever an import changes of the sensitive settings was in the question: the two read a file alike.
    const QJsonArray candidates{true,
                                false,
                                1,
                                0.5,
                                QStringLiteral("smart"),
                                QStringLiteral("custom"),
                                QStringLiteral("true"),
                                QJsonArray{QStringLiteral("x")},
                                QJsonArray{1},
                                QJsonArray{},
                                QJsonObject{},
                                QJsonValue::Null};
    for (const char* key : {"approvalMode", "bypassRiskCheck", "trustedCommands", "dangerousCommands",
                            "smartSummary", "summaryProvider"}) {
        for (const QJsonValue& value : candidates) {
            settings.resetAll();
            const QJsonObject imported{{QLatin1String(key), value}};
            const bool asked = !sensitiveChanges(imported, settings).isEmpty();
            const Settings before = settings.current();
            settings.importDictionary(imported);
            EXPECT_EQ(asked, settings.current() != before)
                << key << ' ' << QJsonDocument(imported).toJson().toStdString();
        }
    }
}

TEST_F(SettingsPagesTest, resetIsAskedFor)
{
    settings.change([](Settings& edited) { edited.edgeSnap = false; });
    click("resetSettings");
    answer("askReset", "cancel");
    EXPECT_FALSE(settings.current().edgeSnap);
    click("resetSettings");
    answer("askReset", "agree");
    EXPECT_TRUE(settings.current().edgeSnap);
}

TEST_F(SettingsPagesTest, doctorReportIsShownAndCopiedAndOnboardingRunAgain)
{
    controller.show(SettingsPageId::advanced);
    EXPECT_FALSE(part<QPlainTextEdit>("doctorReport").isVisible());
    click("runDoctor");
    EXPECT_EQ(part<QPlainTextEdit>("doctorReport").toPlainText(), doctorReport());
    EXPECT_TRUE(part<QPlainTextEdit>("doctorReport").isReadOnly());
    click("copyReport");
    EXPECT_EQ(QApplication::clipboard()->text(), doctorReport());
    click("runOnboarding");
    EXPECT_EQ(onboardings, 1);
}

} // namespace
} // namespace nibbo::test
