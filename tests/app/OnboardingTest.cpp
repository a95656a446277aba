#include "app/onboarding/OnboardingWindowController.h"

#include "agents/ProviderRegistry.h"
#include "app/ShareFolder.h"
#include "app/onboarding/OnboardingAgentRow.h"
#include "app/onboarding/OnboardingView.h"
#include "app/onboarding/PetSelectionPage.h"
#include "base/AppPaths.h"
#include "hooks/InstallQuestion.h"
#include "hooks/PosixFileSystem.h"
#include "pet/PetViewModel.h"
#include "pet/packs/PackLibrary.h"
#include "platform/null/NullPlatform.h"
#include "sessions/AgentSessionStore.h"
#include "sessions/SmartSummarizer.h"
#include "settings/view/Theme.h"
#include "support/ManualTime.h"
#include "support/Wait.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>
#include <QStackedWidget>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace nibbo {
namespace {

const QString completedKey = QStringLiteral("hasCompletedOnboarding");

QString s(const char16_t* text)
{
    return QString::fromUtf16(text);
}

/// Everything that the onboarding works on, over a home of its own.
class OnboardingTest : public ::testing::Test
{
protected:
    OnboardingTest()
        : home(folder.filePath(QStringLiteral("home")))
        , paths(home, folder.filePath(QStringLiteral("config")))
        , defaults(paths.preferencesFile())
        , settings(defaults)
        , packs(paths, shareFolder() + s(u"/pets"))
        , summarizer(settings, secrets, time, time)
        , pet(time, time, random, [this]() -> const Settings& { return settings.current(); })
        , sessions(pet, time, time, random,
                   {[this]() -> const Settings& { return settings.current(); }, [](const AgentEvent&) {},
                    [](const QUuid&) {}, nullptr})
    {
        QDir().mkpath(home);
        settings.change([](Settings& value) { value.language = AppLanguage::en; });
    }

    ~OnboardingTest() override { QApplication::setPalette(QPalette()); }

    SettingsServices services()
    {
        SettingsServices made{settings,
                              sessions,
                              packs,
                              summarizer,
                              secrets,
                              paths,
                              [this] {
                                  return HookInstaller({paths, home + s(u"/prefix"),
                                                        LauncherPlatform::linuxDesktop,
                                                        settings.snapshot()->enabled},
                                                       files, time);
                              },
                              [this] { settings.setStatus(s(u"claude"), AgentStatus::running); },
                              [](const std::function<void(const QString&)>&) {},
                              [] {},
                              [] { return QHash<QString, QString>(); }};
        made.reducesMotion = [this] { return reducedMotion; };
        return made;
    }

    /// What the settings page's button does.
    OnboardingView& open()
    {
        controller = std::make_unique<OnboardingWindowController>(
            services(), [this] { defaults.set(completedKey, true); });
        controller->show();
        return *controller->window();
    }

    bool isCompleted() const { return defaults.boolean(completedKey).value_or(false); }

    static void click(const QWidget& in, const char16_t* name)
    {
        auto* const button = in.findChild<QAbstractButton*>(s(name));
        ASSERT_NE(button, nullptr) << qPrintable(s(name));
        ASSERT_TRUE(button->isVisible()) << qPrintable(s(name));
        button->click();
    }
    /// To where the focus is, as the keyboard does.
    static void press(OnboardingView& view, Qt::Key key)
    {
        QPointer<QWidget> target(view.focusWidget() != nullptr ? view.focusWidget() : &view);
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier);
            if (target)
                QCoreApplication::sendEvent(target, &event);
        }
    }
    static QString textOf(const QWidget& in, const char16_t* name)
    {
        const auto* const label = in.findChild<QLabel*>(s(name));
        return label != nullptr ? label->text() : s(u"(there is no such text)");
    }
    static QWidget& page(const OnboardingView& view)
    {
        return *view.findChild<QStackedWidget*>()->currentWidget();
    }
    static QMessageBox* box(const OnboardingView& view, const char16_t* name)
    {
        return view.findChild<QMessageBox*>(s(name));
    }
    OnboardingView& openAgents()
    {
        OnboardingView& view = open();
        view.forward();
        view.forward();
        return view;
    }
    void enableOnly(const QStringList& ids)
    {
        for (const ProviderSpec& spec : ProviderRegistry::all())
            settings.setEnabled(spec.id, ids.contains(spec.id));
    }

    QTemporaryDir folder;
    QString home;
    AppPaths paths;
    UserDefaults defaults;
    SettingsStore settings;
    PackLibrary packs;
    NullSecretStore secrets;
    test::ManualTime time;
    test::ScriptedRandom random;
    SmartSummarizer summarizer;
    PetViewModel pet;
    AgentSessionStore sessions;
    PosixFileSystem files;
    bool reducedMotion = true;
    std::unique_ptr<OnboardingWindowController> controller;
};

TEST_F(OnboardingTest, leadsToTheEndByKeyboardAndThenSetsItsFlag)
{
    QPointer<OnboardingView> view(&open());
    EXPECT_EQ(view->windowTitle(), s(u"Welcome to Nibbo"));
    EXPECT_FALSE(view->findChild<QWidget*>(s(u"back"))->isVisible());

    struct Row
    {
        const char16_t* forward;
        const char16_t* title;
        const char16_t* progress;
    };
    const std::vector<Row> rows{
        {u"Get Started", u"Welcome to Nibbo", u"Page 1 of 3"},
        {u"Continue", u"Select Your Pet", u"Page 2 of 3"},
        {u"Done", u"Setup Agent Integration", u"Page 3 of 3"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(view->findChild<QAbstractButton*>(s(u"forward"))->text(), s(row.forward));
        EXPECT_EQ(textOf(page(*view), u"title"), s(row.title));
        EXPECT_EQ(view->findChild<QWidget*>(s(u"progress"))->accessibleName(), s(row.progress));
        EXPECT_FALSE(isCompleted());
        press(*view, Qt::Key_Return);
    }
    EXPECT_TRUE(isCompleted());
    EXPECT_TRUE(test::waitFor([&] { return view.isNull(); }));
}

TEST_F(OnboardingTest, tabReachesEverythingInTheOrderOfReading)
{
    OnboardingView& view = openAgents();
    QStringList reached;
    for (qsizetype i = 0; i < static_cast<qsizetype>(ProviderRegistry::all().size()) + 4; ++i) {
        press(view, Qt::Key_Tab);
        const QWidget* const at = view.focusWidget();
        reached += at->objectName() == s(u"enable") ? at->parentWidget()->objectName() : at->objectName();
    }
    QStringList expected;
    for (const ProviderSpec& spec : ProviderRegistry::all())
        expected += spec.id;
    expected << s(u"detect") << s(u"install") << s(u"back") << s(u"forward");
    EXPECT_EQ(reached, expected);

    press(view, Qt::Key_Tab);
    press(view, Qt::Key_Space);
    EXPECT_FALSE(settings.isEnabled(s(u"claude")));
}

TEST_F(OnboardingTest, goesBackAndForward)
{
    reducedMotion = false;
    OnboardingView& view = open();
    // Faster than any page can come in.
    click(view, u"forward");
    click(view, u"forward");
    EXPECT_EQ(view.page(), 2);
    click(view, u"back");
    EXPECT_EQ(view.page(), 1);
    click(view, u"back");
    EXPECT_EQ(view.page(), 0);
    view.back();
    EXPECT_EQ(view.page(), 0);
}

TEST_F(OnboardingTest, closedHalfWayLeavesTheFlagAloneAndStartsOver)
{
    QPointer<OnboardingView> view(&open());
    view->forward();
    press(*view, Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([&] { return view.isNull(); }));
    EXPECT_EQ(controller->window(), nullptr);
    EXPECT_FALSE(defaults.boolean(completedKey).has_value());

    controller->show();
    ASSERT_NE(controller->window(), nullptr);
    EXPECT_EQ(controller->window()->page(), 0);
}

TEST_F(OnboardingTest, showAgainKeepsTheWindowAndANewControllerReplacesIt)
{
    OnboardingView& view = open();
    view.forward();
    controller->show();
    EXPECT_EQ(controller->window(), &view);
    EXPECT_EQ(view.page(), 1);

    QPointer<OnboardingView> old(&view);
    OnboardingView& fresh = open();
    EXPECT_TRUE(old.isNull());
    EXPECT_EQ(fresh.page(), 0);
    EXPECT_FALSE(isCompleted());
}

TEST_F(OnboardingTest, replacingItsControllerWhenItCompletesIsHarmless)
{
    controller = std::make_unique<OnboardingWindowController>(services(), [this] {
        defaults.set(completedKey, true);
        controller.reset();
    });
    controller->show();
    OnboardingView& view = *controller->window();
    for (int page = 0; page < 3; ++page)
        view.forward();
    EXPECT_TRUE(isCompleted());
    EXPECT_EQ(controller, nullptr);
}

TEST_F(OnboardingTest, languageSwitchesWhileItIsOpen)
{
    OnboardingView& view = openAgents();
    struct Row
    {
        AppLanguage language;
        const char16_t* window;
        const char16_t* title;
        const char16_t* message;
        const char16_t* forward;
        const char16_t* install;
        const char16_t* status;
    };
    const std::vector<Row> rows{
        {AppLanguage::zh, u"欢迎使用 Nibbo", u"设置 Agent 接入",
         u"安装桥接以接收实时 agent 事件。即使 Nibbo 关闭，你的 CLI 仍可正常工作。", u"完成", u"安装桥接",
         u"未检测"},
        {AppLanguage::en, u"Welcome to Nibbo", u"Setup Agent Integration",
         u"Install the bridge to receive live agent events. Your CLIs keep working even when Nibbo is "
         u"closed.",
         u"Done", u"Install Bridge", u"Not checked"},
    };
    for (const Row& row : rows) {
        settings.change([&](Settings& value) { value.language = row.language; });
        EXPECT_EQ(view.windowTitle(), s(row.window));
        EXPECT_EQ(textOf(page(view), u"title"), s(row.title));
        EXPECT_EQ(textOf(page(view), u"message"), s(row.message));
        EXPECT_EQ(view.findChild<QAbstractButton*>(s(u"forward"))->text(), s(row.forward));
        EXPECT_EQ(view.findChild<QAbstractButton*>(s(u"install"))->text(), s(row.install));
        EXPECT_EQ(textOf(*view.findChild<OnboardingAgentRow*>(s(u"claude")), u"status"), s(row.status));
    }
}

TEST_F(OnboardingTest, namesTheRunningSystem)
{
    OnboardingView& view = open();
    const QString system = QSysInfo::kernelType() == s(u"linux") ? s(u"Linux") : QString();
    EXPECT_EQ(textOf(page(view), u"subtitle"), s(u"Your personal %1 AI coding companion.").arg(system));
}

TEST_F(OnboardingTest, rowsFollowTheStoreAndWriteToIt)
{
    OnboardingView& view = openAgents();
    const auto rows = view.findChildren<OnboardingAgentRow*>();
    ASSERT_EQ(rows.size(), static_cast<int>(ProviderRegistry::all().size()));
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const ProviderSpec& spec = ProviderRegistry::all()[static_cast<std::size_t>(i)];
        auto* const toggle = rows[i]->findChild<QAbstractButton*>(s(u"enable"));
        EXPECT_EQ(rows[i]->objectName(), spec.id);
        EXPECT_EQ(toggle->accessibleName(), spec.title);
        EXPECT_EQ(toggle->isChecked(), spec.confirmed);
        toggle->click();
        EXPECT_EQ(settings.isEnabled(spec.id), !spec.confirmed) << qPrintable(spec.id);
        settings.setEnabled(spec.id, spec.confirmed);
        EXPECT_EQ(toggle->isChecked(), spec.confirmed) << qPrintable(spec.id);
    }
    click(view, u"detect");
    EXPECT_EQ(textOf(*rows.front(), u"status"), s(u"Running"));
    EXPECT_EQ(textOf(*rows.back(), u"status"), s(u"Not checked"));
}

TEST_F(OnboardingTest, asksBeforeItInstalls)
{
    const QString after =
        s(u"\n\nA timestamped backup is saved under Nibbo's Application Support → Backups, and you "
          u"can remove the bridge anytime from Settings. Your CLIs keep working even when Nibbo is "
          u"closed (the bridge fails open).");
    const QString before = s(u"This backs up, then modifies the configs for your enabled agents:\n");
    struct Row
    {
        QStringList enabled;
        QString list;
    };
    const std::vector<Row> rows{
        {{}, {}},
        {{s(u"opencode")}, s(u"  • ~/.config/opencode/plugins/nibbo.js")},
        {{s(u"cline"), s(u"claude")}, s(u"  • ~/.claude/settings.json\n  • ~/Documents/Cline/Rules/Hooks")},
    };
    for (const Row& row : rows) {
        enableOnly(row.enabled);
        OnboardingView& view = openAgents();
        click(view, u"install");
        QMessageBox* const question = box(view, u"installQuestion");
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(question->text(), s(u"Install Nibbo hook bridge?"));
        EXPECT_EQ(question->informativeText(), before + row.list + after);
        EXPECT_EQ(question->findChild<QAbstractButton*>(s(u"agree"))->text(), s(u"Install"));
        EXPECT_EQ(question->findChild<QAbstractButton*>(s(u"cancel"))->text(), s(u"Cancel"));
    }
    enableOnly({s(u"codex")});
    EXPECT_EQ(
        installQuestion(services().installer(), AppLanguage::zh).message,
        s(u"将先备份、再修改已启用 agent 的配置：\n  • ~/.codex/hooks.json\n\n带时间戳的备份保存在 Nibbo 的 "
          u"Application Support → Backups，你随时可在设置里移除桥接。即使 Nibbo 关闭，你的 CLI "
          u"仍可正常工作（桥接失败时放行）。"));
}

TEST_F(OnboardingTest, cancelledInstallTouchesNothing)
{
    enableOnly({s(u"claude")});
    OnboardingView& view = openAgents();
    click(view, u"install");
    QPointer<QMessageBox> question(box(view, u"installQuestion"));
    ASSERT_FALSE(question.isNull());
    question->findChild<QAbstractButton*>(s(u"cancel"))->click();
    ASSERT_TRUE(test::waitFor([&] { return question.isNull(); }));
    EXPECT_FALSE(QFileInfo::exists(home + s(u"/.claude")));
    EXPECT_FALSE(QFileInfo::exists(home + s(u"/.nibbo")));
    EXPECT_FALSE(view.findChild<QWidget*>(s(u"installed"))->isVisible());
}

TEST_F(OnboardingTest, installsTheBridgeAndSaysSo)
{
    enableOnly({s(u"claude")});
    OnboardingView& view = openAgents();
    QAbstractButton* const install = view.findChild<QAbstractButton*>(s(u"install"));
    QAbstractButton* const forward = view.findChild<QAbstractButton*>(s(u"forward"));
    QWidget* const installed = view.findChild<QWidget*>(s(u"installed"));
    click(view, u"install");
    box(view, u"installQuestion")->findChild<QAbstractButton*>(s(u"agree"))->click();
    // The answer comes through the event loop, so this moment is always seen.
    EXPECT_EQ(install->text(), s(u"Installing…"));
    forward->click();
    EXPECT_FALSE(isCompleted());

    ASSERT_TRUE(test::waitFor([&] { return installed->isVisible(); }));
    EXPECT_FALSE(install->isVisible());
    EXPECT_EQ(textOf(view, u"installedText"), s(u"Bridge Installed"));
    EXPECT_EQ(textOf(page(view), u"message"), s(u"Agent events are wired into Nibbo. You're all set."));
    EXPECT_TRUE(services().installer().status().value(s(u"claude")));

    // Another choice has to be installed again; the old one is installed still.
    settings.setEnabled(s(u"gemini"), true);
    EXPECT_TRUE(install->isVisible());
    EXPECT_EQ(install->text(), s(u"Install Bridge"));
    EXPECT_FALSE(installed->isVisible());
    forward->click();
    EXPECT_TRUE(isCompleted());
}

TEST_F(OnboardingTest, choosingOtherwiseDuringAnInstallAsksForAnother)
{
    enableOnly({s(u"claude")});
    OnboardingView& view = openAgents();
    QAbstractButton* const install = view.findChild<QAbstractButton*>(s(u"install"));
    click(view, u"install");
    box(view, u"installQuestion")->findChild<QAbstractButton*>(s(u"agree"))->click();
    settings.setEnabled(s(u"codex"), true);
    ASSERT_TRUE(test::waitFor([&] { return install->text() == s(u"Install Bridge"); }));
    EXPECT_FALSE(view.findChild<QWidget*>(s(u"installed"))->isVisible());
    EXPECT_TRUE(services().installer().status().value(s(u"claude")));
    EXPECT_FALSE(services().installer().status().value(s(u"codex")));
}

TEST_F(OnboardingTest, failedInstallTellsWhyAndCanBeTriedAgain)
{
    enableOnly({s(u"claude")});
    // A file where the folder of the launcher has to be.
    QFile obstacle(home + s(u"/.nibbo"));
    ASSERT_TRUE(obstacle.open(QFile::WriteOnly));
    obstacle.close();
    OnboardingView& view = openAgents();
    click(view, u"install");
    box(view, u"installQuestion")->findChild<QAbstractButton*>(s(u"agree"))->click();
    ASSERT_TRUE(test::waitFor([&] { return box(view, u"installFailure") != nullptr; }));
    const QMessageBox* const failure = box(view, u"installFailure");
    EXPECT_EQ(failure->text(), s(u"Could not install hook bridge"));
    EXPECT_TRUE(failure->informativeText().contains(s(u".nibbo"))) << qPrintable(failure->informativeText());
    EXPECT_EQ(view.findChild<QAbstractButton*>(s(u"install"))->text(), s(u"Install Bridge"));

    ASSERT_TRUE(obstacle.remove());
    click(view, u"install");
    const auto questions = view.findChildren<QMessageBox*>(s(u"installQuestion"));
    questions.back()->findChild<QAbstractButton*>(s(u"agree"))->click();
    EXPECT_TRUE(test::waitFor([&] { return view.findChild<QWidget*>(s(u"installed"))->isVisible(); }));
}

TEST_F(OnboardingTest, closingTheWindowLeavesAnInstallToFinish)
{
    enableOnly({s(u"claude"), s(u"codex")});
    OnboardingView& view = openAgents();
    click(view, u"install");
    box(view, u"installQuestion")->findChild<QAbstractButton*>(s(u"agree"))->click();
    view.close();
    controller.reset();
    EXPECT_TRUE(services().installer().status().value(s(u"codex")));
}

TEST_F(OnboardingTest, petSources)
{
    OnboardingView& view = open();
    view.forward();
    auto& selection = dynamic_cast<PetSelectionPage&>(page(view));
    const auto checked = [&] {
        QStringList names;
        for (const auto* button : selection.findChildren<QAbstractButton*>()) {
            if (button->isChecked())
                names += button->objectName();
        }
        return names;
    };
    EXPECT_EQ(checked(), QStringList{s(u"official")});
    EXPECT_EQ(textOf(selection, u"sourceLabel"), s(u"Pet Source"));

    QImage picture(40, 40, QImage::Format_ARGB32);
    picture.fill(Qt::red);
    const QString source = folder.filePath(s(u"mine.png"));
    ASSERT_TRUE(picture.save(source));
    selection.import(source);
    click(view, u"forward");
    EXPECT_EQ(view.page(), 1) << "an import that is under way is not walked away from";
    ASSERT_TRUE(test::waitFor([&] { return settings.current().petSource == PetSource::custom; }));
    EXPECT_EQ(checked(), QStringList{s(u"custom")});
    ASSERT_TRUE(settings.current().customPetPath.has_value());
    EXPECT_TRUE(settings.current().customPetPath->startsWith(paths.customPetsDirectory()));

    selection.import(shareFolder() + s(u"/pets/furli"));
    ASSERT_TRUE(test::waitFor([&] { return settings.current().petSource == PetSource::pack; }));
    EXPECT_EQ(checked(), QStringList{s(u"pack")});
    EXPECT_NE(textOf(selection, u"petName"), s(u"Nibbo"));

    // What is no pack changes nothing and says why.
    const QString broken = folder.filePath(s(u"broken.zip"));
    QFile file(broken);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("no archive");
    file.close();
    const Settings before = settings.current();
    selection.import(broken);
    ASSERT_TRUE(test::waitFor(
        [&] { return textOf(selection, u"note").startsWith(s(u"This file cannot be used: ")); }));
    EXPECT_EQ(settings.current(), before);

    // A dialog that is only opened chooses nothing.
    click(selection, u"custom");
    EXPECT_NE(view.findChild<QWidget*>(s(u"fileDialog")), nullptr);
    EXPECT_EQ(checked(), QStringList{s(u"pack")});
    click(selection, u"official");
    EXPECT_EQ(settings.current().petSource, PetSource::official);
    EXPECT_EQ(textOf(selection, u"petName"), s(u"Nibbo"));
}

/// Names what of a text that is seen does not fit into its widget.
QStringList clippedTexts(const QWidget& in)
{
    QStringList clipped;
    for (const auto* label : in.findChildren<QLabel*>()) {
        if (!label->isVisible() || label->text().isEmpty())
            continue;
        const int height =
            label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
        const int width = label->wordWrap() ? 0 : label->sizeHint().width();
        if (label->height() < height || label->width() < width)
            clipped += label->text();
    }
    for (const auto* button : in.findChildren<QAbstractButton*>()) {
        if (button->isVisible() &&
            (button->width() < button->sizeHint().width() || button->height() < button->sizeHint().height()))
            clipped += button->text();
    }
    return clipped;
}

TEST_F(OnboardingTest, noTextIsClippedAndEveryControlHasAName)
{
    const QFont ordinary = QApplication::font();
    for (const double scale : {1.0, 1.6}) {
        QFont font = ordinary;
        font.setPointSizeF(ordinary.pointSizeF() * scale);
        QApplication::setFont(font);
        for (const AppLanguage language : {AppLanguage::en, AppLanguage::zh}) {
            settings.change([&](Settings& value) { value.language = language; });
            OnboardingView& view = open();
            EXPECT_GE(view.width(), 540);
            EXPECT_GE(view.height(), 480);
            for (int page = 0; page < 3; ++page) {
                QCoreApplication::sendPostedEvents();
                EXPECT_EQ(clippedTexts(view), QStringList())
                    << "page " << page << " language " << static_cast<int>(language) << " scale " << scale;
                for (const auto* button : view.findChildren<QAbstractButton*>()) {
                    if (button->isVisible()) {
                        EXPECT_FALSE(button->accessibleName().isEmpty()) << qPrintable(button->objectName());
                    }
                }
                if (page < 2)
                    view.forward();
            }
            if (scale == 1.0) {
                EXPECT_EQ(view.size(), QSize(540, 480));
            }
        }
    }
    QApplication::setFont(ordinary);
}

/// Pictures of all pages, for people to look at.
TEST_F(OnboardingTest, pictures)
{
    const QString pictures = qEnvironmentVariable("NIBBO_PICTURES");
    if (pictures.isEmpty())
        GTEST_SKIP() << "NIBBO_PICTURES names no folder";
    QDir().mkpath(pictures);
    settings.setStatus(s(u"claude"), AgentStatus::running);
    settings.setStatus(s(u"codex"), AgentStatus::connected);
    settings.setStatus(s(u"gemini"), AgentStatus::connected);
    for (const char16_t* id : {u"opencode", u"qwen", u"qoder", u"codebuddy", u"kimi"})
        settings.setStatus(s(id), AgentStatus::notFound);
    for (const char16_t* theme : {u"light", u"dark"}) {
        QApplication::setPalette(s(theme) == s(u"dark") ? theme::darkDesktop() : QPalette());
        for (const AppLanguage language : {AppLanguage::en, AppLanguage::zh}) {
            settings.change([&](Settings& value) { value.language = language; });
            OnboardingView& view = open();
            const auto save = [&](const QString& name) {
                QCoreApplication::processEvents();
                const QPixmap grabbed = view.grab();
                EXPECT_TRUE(grabbed.save(
                    QStringLiteral("%1/onboarding-%2-%3-%4@%5.png")
                        .arg(pictures, name, s(language == AppLanguage::zh ? u"zh" : u"en"), s(theme))
                        .arg(grabbed.devicePixelRatioF())));
            };
            save(s(u"welcome"));
            view.forward();
            save(s(u"pet"));
            view.forward();
            save(s(u"agents"));
            click(view, u"install");
            EXPECT_TRUE(box(view, u"installQuestion")
                            ->grab()
                            .save(pictures + s(u"/onboarding-question-") + s(theme) +
                                  s(language == AppLanguage::zh ? u"-zh.png" : u"-en.png")));
            box(view, u"installQuestion")->findChild<QAbstractButton*>(s(u"agree"))->click();
            ASSERT_TRUE(
                test::waitFor([&] { return view.findChild<QWidget*>(s(u"installed"))->isVisible(); }));
            save(s(u"installed"));
        }
    }
}

} // namespace
} // namespace nibbo
