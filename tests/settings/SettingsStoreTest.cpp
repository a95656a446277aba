#include "settings/SettingsStore.h"
#include "agents/ProviderRegistry.h"
#include "approval/CommandLists.h"
#include "base/AtomicFile.h"
#include "settings/SecretStore.h"
#include "settings/SettingsTexts.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

class SettingsStoreTest : public ::testing::Test
{
protected:
    QString path() const { return m_folder.filePath(QStringLiteral("nibbo/defaults.json")); }

    void writeFile(const QByteArray& content) { ASSERT_TRUE(writeAtomically(path(), content)); }
    QJsonObject file() const
    {
        const Result<QByteArray> content = readWholeFile(path());
        return content ? QJsonDocument::fromJson(*content).object() : QJsonObject();
    }

    QTemporaryDir m_folder;
};

TEST_F(SettingsStoreTest, freshFileGivesTheDefaultsAndIsNotWritten)
{
    UserDefaults defaults(path());
    const SettingsStore store(defaults);
    EXPECT_EQ(store.current(), defaultSettings());
    EXPECT_TRUE(store.current().alwaysOnTop);
    EXPECT_FALSE(store.current().pauseNibbo);
    EXPECT_TRUE(store.isEnabled(QStringLiteral("Claude")));
    EXPECT_FALSE(store.isEnabled(QStringLiteral("kimi")));
    EXPECT_FALSE(store.isEnabled(QStringLiteral("nobody")));
    EXPECT_EQ(store.current().trustedCommands, defaultTrustedCommands());
    EXPECT_FALSE(QFile::exists(path()));
}

TEST_F(SettingsStoreTest, storedValuesOfTheWrongTypeOrNameFallBack)
{
    writeFile(R"({"settings.bubbleStyle":"huge","settings.petSource":"","settings.alwaysOnTop":"yes",
        "settings.idleSleepMinutes":2.5,"settings.petSizeScale":1.5,"settings.trustedCommands":["a",3],
        "settings.edgeSnap":false,"settings.language":"zh","unknown":{"kept":1}})");
    UserDefaults defaults(path());
    SettingsStore store(defaults);
    Settings expected = defaultSettings();
    expected.petSizeScale = 1.5;
    expected.edgeSnap = false;
    expected.language = AppLanguage::zh;
    EXPECT_EQ(store.current(), expected);

    store.change([](Settings& settings) { settings.themeColor = QStringLiteral("blue"); });
    EXPECT_EQ(file().value(QStringLiteral("unknown")).toObject().value(QStringLiteral("kept")).toInt(), 1)
        << "what is not ours in the file stays";
    EXPECT_EQ(file().value(QStringLiteral("settings.themeColor")).toString(), QStringLiteral("blue"));
    EXPECT_EQ(file().value(QStringLiteral("settings.bubbleStyle")).toString(), QStringLiteral("huge"))
        << "only what changed is written";
}

TEST_F(SettingsStoreTest, everyPreferenceIsWrittenThroughAndReadBack)
{
    Settings changed = defaultSettings();
    changed.launchAtLogin = true;
    changed.alwaysOnTop = false;
    changed.pauseNibbo = true;
    changed.petSource = PetSource::pack;
    changed.customPetPath = QStringLiteral("/a/pic.png");
    changed.activePackPath = QStringLiteral("/a/pack");
    changed.petSizeScale = 1.25;
    changed.bubbleStyle = BubbleStyle::large;
    changed.singleClickBehavior = SingleClickBehavior::quickPanel;
    changed.doubleClickBehavior = DoubleClickBehavior::none;
    changed.edgeSnap = false;
    changed.idleSleepMinutes = 45;
    changed.approvalMode = ApprovalMode::fullAuto;
    changed.trustedCommands = {QStringLiteral("ls")};
    changed.dangerousCommands = {QStringLiteral("rm"), QStringLiteral("dd")};
    changed.bypassRiskCheck = true;
    changed.showNotifications = false;
    changed.notifyApprovalRequired = false;
    changed.notifyTaskCompleted = false;
    changed.notifyRiskyAction = false;
    changed.themeColor = QStringLiteral("purple");
    changed.animationSpeed = 0.5;
    changed.showActivityLabel = false;
    changed.showProviderChip = true;
    changed.smartSummary = true;
    changed.summaryProvider = SummaryProvider::deepseek;
    changed.language = AppLanguage::zh;
    changed.enabled[QStringLiteral("kimi")] = true;

    UserDefaults defaults(path());
    SettingsStore store(defaults);
    int announced = 0;
    QObject::connect(&store, &SettingsStore::changed, &store, [&announced] { ++announced; });
    const std::shared_ptr<const Settings> old = store.snapshot();
    store.change([&changed](Settings& settings) { settings = changed; });
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(*old, defaultSettings()) << "a snapshot that another thread holds never changes";
    EXPECT_EQ(*store.snapshot(), changed);

    UserDefaults again(path());
    SettingsStore restarted(again);
    EXPECT_EQ(restarted.current(), changed);

    // Export to another installation carries everything but the pack's folder.
    QTemporaryDir elsewhere;
    UserDefaults otherDefaults(elsewhere.filePath(QStringLiteral("defaults.json")));
    SettingsStore other(otherDefaults);
    other.importDictionary(restarted.exportDictionary());
    Settings expected = changed;
    expected.activePackPath.reset();
    EXPECT_EQ(other.current(), expected);

    // Importing its own export changes nothing, the pack's folder included.
    restarted.importDictionary(restarted.exportDictionary());
    EXPECT_EQ(restarted.current(), changed);

    restarted.setSummaryModel(SummaryProvider::anthropic, QStringLiteral("mine"));
    restarted.resetAll();
    EXPECT_EQ(restarted.current(), defaultSettings());
    EXPECT_EQ(restarted.summaryModel(SummaryProvider::anthropic), QStringLiteral("mine"));
    EXPECT_FALSE(file().contains(QStringLiteral("settings.customPetPath")));
}

TEST_F(SettingsStoreTest, flagsOfEarlierVersionsMoveOnce)
{
    writeFile(R"({"settings.enableClaude":false,"settings.enableCodex":false,"settings.enable.codex":true})");
    UserDefaults defaults(path());
    const SettingsStore store(defaults);
    EXPECT_FALSE(store.isEnabled(QStringLiteral("claude")));
    EXPECT_TRUE(store.isEnabled(QStringLiteral("codex"))) << "the new key wins";
    EXPECT_EQ(file().value(QStringLiteral("settings.enable.claude")), QJsonValue(false));
    EXPECT_TRUE(file().contains(QStringLiteral("settings.enableClaude")));
}

TEST_F(SettingsStoreTest, importSkipsWhatItCannotUse)
{
    struct Row
    {
        const char* json;
        std::function<void(Settings&)> expected;
    };
    const std::vector<Row> rows{
        {R"({"petSizeScale":9.0})", [](Settings& s) { s.petSizeScale = 9.0; }},
        {R"({"bubbleStyle":"nope","language":"en"})", [](Settings& s) { s.language = AppLanguage::en; }},
        {R"({"idleSleepMinutes":"7","edgeSnap":1,"trustedCommands":"ls"})", [](Settings&) {}},
        {R"({"enabled":{"KIMI":true,"claude":"no"},"activePackPath":"/x"})",
         [](Settings& s) { s.enabled[QStringLiteral("kimi")] = true; }},
        {R"({"enabled":[],"version":99,"summaryModels":{"openai":"  m \n","other":"x","custom":3}})",
         [](Settings&) {}},
    };
    for (const Row& row : rows) {
        QFile::remove(path());
        UserDefaults defaults(path());
        SettingsStore store(defaults);
        Settings expected = defaultSettings();
        row.expected(expected);
        store.importDictionary(QJsonDocument::fromJson(row.json).object());
        EXPECT_EQ(store.current(), expected) << row.json;
    }
    EXPECT_EQ(file().value(QStringLiteral("summary.model.openai")).toString(), QStringLiteral("m"));
    EXPECT_FALSE(file().contains(QStringLiteral("summary.model.other")));
}

TEST_F(SettingsStoreTest, builtInProvidersKeepTheirAddress)
{
    UserDefaults defaults(path());
    SettingsStore store(defaults);
    store.setSummaryBaseURL(SummaryProvider::openai, QStringLiteral("https://elsewhere"));
    store.setSummaryBaseURL(SummaryProvider::custom, QStringLiteral("http://localhost:1"));
    EXPECT_EQ(store.summaryBaseURL(SummaryProvider::openai), defaultSummaryBaseURL(SummaryProvider::openai));
    EXPECT_EQ(store.summaryBaseURL(SummaryProvider::custom), QStringLiteral("http://localhost:1"));
}

TEST_F(SettingsStoreTest, loginItemHearsOfEveryAssignment)
{
    UserDefaults defaults(path());
    SettingsStore store(defaults);
    std::vector<bool> heard;
    QObject::connect(&store, &SettingsStore::launchAtLoginAssigned, &store,
                     [&heard](bool enabled) { heard.push_back(enabled); });
    store.change([](Settings& settings) { settings.launchAtLogin = true; });
    store.importDictionary({{QStringLiteral("launchAtLogin"), true}});
    store.importDictionary({{QStringLiteral("alwaysOnTop"), true}});
    store.resetAll();
    EXPECT_EQ(heard, (std::vector<bool>{true, true, false}));
}

TEST_F(SettingsStoreTest, twoWritersLoseNothingAndABrokenFileIsKept)
{
    UserDefaults first(path());
    UserDefaults second(path());
    first.set(QStringLiteral("a"), 1);
    second.set(QStringLiteral("b"), true);
    first.set(QStringLiteral("c"), QStringLiteral("x"));
    EXPECT_EQ(file().size(), 3);

    writeFile("{\"a\": tru");
    UserDefaults third(path());
    EXPECT_FALSE(third.boolean(QStringLiteral("a")));
    third.set(QStringLiteral("d"), 1);
    const QStringList kept = QFileInfo(path()).dir().entryList({QStringLiteral("defaults.json.broken-*")});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(*readWholeFile(QFileInfo(path()).dir().filePath(kept.first())), QByteArray("{\"a\": tru"));
    EXPECT_EQ(file().size(), 1);
    EXPECT_EQ(QFile::permissions(path()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());

    // Dotfiles under version control are links, and stay so.
    const QString real = m_folder.filePath(QStringLiteral("real.json"));
    ASSERT_TRUE(QFile::rename(path(), real));
    ASSERT_TRUE(QFile::link(real, path()));
    third.set(QStringLiteral("e"), 2);
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(file().size(), 2);
}

TEST_F(SettingsStoreTest, whatCannotBeWrittenNowIsWrittenLater)
{
    UserDefaults defaults(path());
    defaults.set(QStringLiteral("a"), 1);
    // A folder in the place of the file refuses reading as well as writing, whoever asks.
    const QString aside = path() + QStringLiteral(".aside");
    ASSERT_TRUE(QFile::rename(path(), aside));
    ASSERT_TRUE(QDir().mkpath(path()));
    defaults.set(QStringLiteral("b"), 2);
    EXPECT_EQ(defaults.integer(QStringLiteral("b")), 2);
    EXPECT_TRUE(QFileInfo(path()).isDir());
    ASSERT_TRUE(QDir().rmdir(path()));
    ASSERT_TRUE(QFile::rename(aside, path()));
    defaults.set(QStringLiteral("c"), 3);
    EXPECT_EQ(file().size(), 3);
}

TEST(EffectiveLanguage, followsTheFirstPreferredLanguageOnly)
{
    struct Row
    {
        AppLanguage chosen;
        const char16_t* preferred;
        AppLanguage expected;
    };
    for (const Row& row :
         {Row{AppLanguage::system, u"zh-Hant-TW", AppLanguage::zh},
          Row{AppLanguage::system, u"zh", AppLanguage::zh},
          Row{AppLanguage::system, u"en-GB", AppLanguage::en},
          Row{AppLanguage::system, u"C", AppLanguage::en}, Row{AppLanguage::system, u"", AppLanguage::en},
          Row{AppLanguage::en, u"zh-CN", AppLanguage::en}, Row{AppLanguage::zh, u"en", AppLanguage::zh}})
        EXPECT_EQ(effectiveLanguage(row.chosen, QString::fromUtf16(row.preferred)), row.expected);
    EXPECT_EQ(title(AppLanguage::en, AppLanguage::zh), QStringLiteral("English"));
    EXPECT_EQ(title(AppLanguage::system, AppLanguage::zh), QStringLiteral("跟随系统"));
}

/// A keyring in memory that can refuse.
class MemorySecrets final : public SecretStore
{
public:
    QMap<QString, QString> entries;
    bool refusesReading = false;
    bool refusesWriting = false;

    void read(const QString& name, Read answer) override
    {
        if (refusesReading && name == apiKeyName(QStringLiteral("anthropic")))
            answer(Failure{QStringLiteral("locked")});
        else
            answer(entries.contains(name) ? std::optional(entries.value(name)) : std::nullopt);
    }
    void write(const QString& name, const QString& secret, Done answer) override
    {
        if (refusesWriting)
            return answer(Failure{QStringLiteral("locked")});
        entries.insert(name, secret);
        answer({});
    }
    void remove(const QString& name, Done answer) override
    {
        entries.remove(name);
        answer({});
    }
};

TEST(OldKey, movesOnlyWhereNothingCanBeLost)
{
    const QString oldName = QStringLiteral("anthropicAPIKey");
    const QString newName = apiKeyName(QStringLiteral("anthropic"));
    struct Row
    {
        QMap<QString, QString> before;
        bool refusesReading;
        bool refusesWriting;
        QMap<QString, QString> after;
    };
    const QString k = QStringLiteral("k");
    const QString n = QStringLiteral("n");
    const std::vector<Row> rows{
        {{{oldName, k}}, false, false, {{newName, k}}},
        {{{oldName, k}, {newName, n}}, false, false, {{oldName, k}, {newName, n}}},
        {{{oldName, k}, {newName, QString()}}, false, false, {{newName, k}}},
        {{{oldName, QString()}}, false, false, {{oldName, QString()}}},
        {{{oldName, k}}, true, false, {{oldName, k}}},
        {{{oldName, k}}, false, true, {{oldName, k}}},
    };
    for (const Row& row : rows) {
        MemorySecrets secrets;
        secrets.entries = row.before;
        secrets.refusesReading = row.refusesReading;
        secrets.refusesWriting = row.refusesWriting;
        migrateOldKey(secrets);
        EXPECT_EQ(secrets.entries, row.after);
    }
}

} // namespace
} // namespace nibbo
