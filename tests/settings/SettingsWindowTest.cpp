#include "settings/SettingsTexts.h"
#include "settings/SettingsWindowFixture.h"
#include "settings/view/SettingsPage.h"
#include "settings/view/Theme.h"

#include <QApplication>
#include <QComboBox>
#include <QJsonArray>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QStackedWidget>
#include <QWheelEvent>

namespace nibbo::test {
namespace {

class SettingsWindowTest : public SettingsWindowFixture
{
protected:
    void SetUp() override { controller.show(); }

    QListWidget& sidebar() { return part<QListWidget>("sidebar"); }
    QWidget& page() { return *controller.window()->findChild<QStackedWidget*>()->currentWidget(); }
    static void press(QWidget& widget, int key)
    {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&widget, &down);
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(&widget, &up);
    }
};

/// A preference, the control of the same name, and values that the control can be brought to.
struct ControlRow
{
    const char* name;
    QJsonArray values;
};

QJsonArray names(std::initializer_list<const char*> raw)
{
    QJsonArray values;
    for (const char* each : raw)
        values.append(QString::fromLatin1(each));
    return values;
}

const std::vector<ControlRow>& controls()
{
    static const QJsonArray onAndOff{true, false, true};
    static const QJsonArray offAndOn{false, true, false};
    static const std::vector<ControlRow> rows{
        {"launchAtLogin", onAndOff},
        {"alwaysOnTop", offAndOn},
        {"pauseNibbo", onAndOff},
        {"edgeSnap", offAndOn},
        {"idleSleepMinutes", {1, 240, 25}},
        {"language", names({"zh", "system", "en"})},
        {"singleClickBehavior", names({"quickPanel", "none", "toggleBubble"})},
        {"doubleClickBehavior", names({"openSettings", "none", "petReaction"})},
        {"petSource", names({"custom", "pack", "official"})},
        {"petSizeScale", {0.5, 2.0, 1.25}},
        {"animationSpeed", {0.25, 3.0, 1.5}},
        {"approvalMode", names({"smart", "fullAuto", "manual"})},
        {"showNotifications", {false, true}},
        {"notifyApprovalRequired", offAndOn},
        {"notifyTaskCompleted", offAndOn},
        {"notifyRiskyAction", offAndOn},
        {"themeColor", names({"blue", "green", "purple", "pink"})},
        {"bubbleStyle", names({"compact", "large", "normal"})},
        {"showActivityLabel", offAndOn},
        {"showProviderChip", onAndOff},
        {"smartSummary", onAndOff},
        {"summaryProvider", names({"openai", "deepseek", "custom", "anthropic"})},
    };
    return rows;
}

/// What the user would do with the control. Radio buttons are named "preference.value".
void operate(QWidget& window, const char* name, const QJsonValue& value)
{
    const QString id = QLatin1String(name);
    if (auto* const radio = window.findChild<QRadioButton*>(id + QLatin1Char('.') + value.toString())) {
        radio->click();
        return;
    }
    auto* const widget = window.findChild<QWidget*>(id);
    ASSERT_NE(widget, nullptr) << name;
    if (auto* const box = qobject_cast<ToggleSwitch*>(widget)) {
        if (box->isChecked() != value.toBool())
            box->click();
    } else if (auto* const choice = qobject_cast<QComboBox*>(widget)) {
        choice->setCurrentIndex(choice->findData(value.toString()));
    } else if (auto* const slider = qobject_cast<QSlider*>(widget)) {
        slider->setValue(qRound(value.toDouble() * 20));
    } else if (auto* const spin = qobject_cast<QSpinBox*>(widget)) {
        spin->setValue(value.toInt());
    } else {
        FAIL() << name << " is no control that this test knows";
    }
}

/// What the control shows, in the form that the preferences keep.
QJsonValue shown(QWidget& window, const char* name)
{
    const QString id = QLatin1String(name);
    auto* const widget = window.findChild<QWidget*>(id);
    if (auto* const box = qobject_cast<ToggleSwitch*>(widget))
        return box->isChecked();
    if (auto* const choice = qobject_cast<QComboBox*>(widget))
        return choice->currentData().toString();
    if (auto* const slider = qobject_cast<QSlider*>(widget))
        return slider->value() / 20.0;
    if (auto* const spin = qobject_cast<QSpinBox*>(widget))
        return spin->value();
    for (const QRadioButton* radio : window.findChildren<QRadioButton*>()) {
        if (radio->isChecked() && radio->objectName().startsWith(id + QLatin1Char('.')))
            return radio->objectName().mid(id.size() + 1);
    }
    return QJsonValue::Undefined;
}

TEST_F(SettingsWindowTest, everyControlIsFoundInTheFileAndBack)
{
    QWidget& window = *controller.window();
    for (const ControlRow& row : controls()) {
        SCOPED_TRACE(row.name);
        for (const QJsonValue& value : row.values) {
            operate(window, row.name, value);
            EXPECT_EQ(stored().value(QStringLiteral("settings.") + QLatin1String(row.name)), value);
        }
        for (const QJsonValue& value : row.values) {
            settings.importDictionary({{QLatin1String(row.name), value}});
            EXPECT_EQ(shown(window, row.name), value) << "a change from outside shows at once";
        }
    }
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        SCOPED_TRACE(spec.id.toStdString());
        auto& toggle = part<ToggleSwitch>(qPrintable(QStringLiteral("enable.") + spec.id));
        const bool before = settings.isEnabled(spec.id);
        EXPECT_EQ(toggle.isChecked(), before);
        toggle.click();
        EXPECT_EQ(stored().value(QStringLiteral("settings.enable.") + spec.id), QJsonValue(!before));
        settings.setEnabled(spec.id, before);
        EXPECT_EQ(toggle.isChecked(), before);
    }
}

TEST_F(SettingsWindowTest, showingWhatNoControlCanBeSetToChangesNothing)
{
    settings.change([](Settings& edited) {
        edited.petSizeScale = 9.0;
        edited.idleSleepMinutes = 100'000;
        edited.themeColor = QStringLiteral("mauve");
    });
    EXPECT_EQ(settings.current().petSizeScale, 9.0);
    EXPECT_EQ(settings.current().idleSleepMinutes, 100'000);
    EXPECT_EQ(settings.current().themeColor, QStringLiteral("mauve"));
    EXPECT_EQ(shown(*controller.window(), "themeColor"), QJsonValue(QStringLiteral("pink")))
        << "any other text is pink";
}

TEST_F(SettingsWindowTest, modeOfTheCardIsSeenOnlyWhileItIsOn)
{
    controller.show(SettingsPageId::approvals);
    auto& card = part<QRadioButton>("approvalMode.allowAll");
    EXPECT_FALSE(card.isVisible());
    settings.change([](Settings& edited) { edited.approvalMode = ApprovalMode::allowAll; });
    EXPECT_TRUE(card.isVisible());
    EXPECT_TRUE(card.isChecked());
    click("approvalMode.manual");
    EXPECT_EQ(settings.current().approvalMode, ApprovalMode::manual);
    EXPECT_FALSE(card.isVisible());
}

TEST_F(SettingsWindowTest, kindsOfNotificationsRestWhileNoneIsShown)
{
    settings.change([](Settings& edited) { edited.showNotifications = false; });
    EXPECT_FALSE(part<ToggleSwitch>("notifyTaskCompleted").isEnabled());
    settings.change([](Settings& edited) { edited.showNotifications = true; });
    EXPECT_TRUE(part<ToggleSwitch>("notifyTaskCompleted").isEnabled());
}

TEST_F(SettingsWindowTest, bypassIsAskedForButGivenUpAtOnce)
{
    auto& bypass = part<ToggleSwitch>("bypassRiskCheck");
    bypass.click();
    EXPECT_FALSE(settings.current().bypassRiskCheck);
    EXPECT_FALSE(bypass.isChecked()) << "it shows what is, not what was asked for";
    answer("askBypass", "cancel");
    EXPECT_FALSE(settings.current().bypassRiskCheck);
    bypass.click();
    answer("askBypass", "agree");
    EXPECT_TRUE(settings.current().bypassRiskCheck);
    EXPECT_TRUE(bypass.isChecked());
    EXPECT_EQ(stored().value(QStringLiteral("settings.bypassRiskCheck")), QJsonValue(true));
    bypass.click();
    EXPECT_FALSE(settings.current().bypassRiskCheck);
}

QString describe(const QWidget& widget)
{
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
    return QStringLiteral("%1 “%2” %3x%4\n")
        .arg(widget.objectName(), label    ? label->text()
                                  : button ? button->text()
                                           : QString())
        .arg(widget.width())
        .arg(widget.height());
}

/// Texts that have less room than they need, and controls that reach out of the page.
QString clipped(QWidget& page)
{
    QString found;
    for (QWidget* widget : page.findChildren<QWidget*>()) {
        if (!widget->isVisible())
            continue;
        bool fits = true;
        if (const auto* const label = qobject_cast<QLabel*>(widget)) {
            fits = label->wordWrap() ? label->height() >= label->heightForWidth(label->width())
                                     : label->width() >= label->sizeHint().width();
        } else if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget) ||
                   qobject_cast<QSpinBox*>(widget)) {
            fits = widget->width() >= widget->minimumSizeHint().width() &&
                   widget->height() >= widget->minimumSizeHint().height() &&
                   widget->mapTo(&page, QPoint(widget->width(), 0)).x() <= page.width();
            if (const auto* const choice = qobject_cast<QComboBox*>(widget)) {
                for (int i = 0; i < choice->count(); ++i)
                    fits &=
                        choice->fontMetrics().horizontalAdvance(choice->itemText(i)) + 24 <= choice->width();
            }
        }
        if (!fits)
            found += describe(*widget);
    }
    return found;
}

TEST_F(SettingsWindowTest, noTextIsClippedInEitherLanguage)
{
    settings.change([](Settings& edited) {
        edited.summaryProvider = SummaryProvider::custom;
        edited.petSource = PetSource::pack;
    });
    for (const QSize size : {controller.window()->minimumSizeHint(), QSize(800, 580), QSize(1500, 900)}) {
        controller.window()->resize(size);
        for (const AppLanguage chosen : {AppLanguage::en, AppLanguage::zh}) {
            const QString tongue = language(chosen);
            for (int i = 0; i < sidebar().count(); ++i) {
                sidebar().setCurrentRow(i);
                ASSERT_TRUE(waitFor([&] { return clipped(page()).isEmpty(); }))
                    << tongue.toStdString() << ' ' << page().objectName().toStdString() << ' ' << size.width()
                    << "\n"
                    << clipped(page()).toStdString();
                const QListWidgetItem* item = sidebar().item(i);
                EXPECT_GE(sidebar().width(),
                          sidebar().sizeHintForIndex(sidebar().indexFromItem(item)).width());
            }
        }
    }
}

TEST_F(SettingsWindowTest, languageSwitchesEveryTextAtOnce)
{
    const auto texts = [this] {
        QStringList all{controller.window()->windowTitle()};
        for (int i = 0; i < sidebar().count(); ++i)
            all.append(sidebar().item(i)->text());
        for (const QLabel* label : controller.window()->findChildren<QLabel*>())
            all.append(label->text());
        for (const QAbstractButton* button : controller.window()->findChildren<QAbstractButton*>())
            all.append(button->text() + QLatin1Char('|') + button->accessibleName());
        return all;
    };
    const auto hasHan = [](const QString& text) {
        return std::ranges::any_of(text, [](QChar each) { return each.script() == QChar::Script_Han; });
    };
    const QStringList english = texts();
    for (const QString& each : english)
        EXPECT_FALSE(hasHan(each)) << each.toStdString();

    language(AppLanguage::zh);
    const QStringList chinese = texts();
    ASSERT_EQ(english.size(), chinese.size());
    EXPECT_EQ(controller.window()->windowTitle(), QStringLiteral("Nibbo 设置"));
    EXPECT_EQ(part<QComboBox>("language").itemText(0), QStringLiteral("跟随系统"));
    EXPECT_EQ(part<QComboBox>("language").itemText(1), QStringLiteral("English"));
    for (qsizetype i = 0; i < chinese.size(); ++i) {
        // Names, numbers and shares are the same in both; sentences are not.
        if (english.at(i).count(QLatin1Char(' ')) > 2) {
            EXPECT_TRUE(hasHan(chinese.at(i))) << chinese.at(i).toStdString();
        }
    }
    language(AppLanguage::en);
    EXPECT_EQ(texts(), english);
}

TEST_F(SettingsWindowTest, everyControlHasANameForThoseWhoDoNotSeeIt)
{
    for (const AppLanguage chosen : {AppLanguage::en, AppLanguage::zh}) {
        language(chosen);
        for (const QWidget* widget : controller.window()->findChildren<QWidget*>()) {
            // The lists that combo boxes open are windows of their own.
            if (widget->window() != controller.window() || !(widget->focusPolicy() & Qt::TabFocus) ||
                qobject_cast<const QScrollBar*>(widget) ||
                widget->objectName().startsWith(QLatin1String("qt_")))
                continue;
            const auto* const button = qobject_cast<const QAbstractButton*>(widget);
            EXPECT_TRUE(!widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()))
                << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
        }
    }
}

TEST_F(SettingsWindowTest, pagesAndControlsAreReachedByKeyboard)
{
    controller.show(SettingsPageId::general);
    sidebar().setFocus();
    ASSERT_TRUE(waitFor([this] { return sidebar().hasFocus(); }));
    press(sidebar(), Qt::Key_Down);
    EXPECT_EQ(page().objectName(), QStringLiteral("pet"));
    press(sidebar(), Qt::Key_Up);
    ASSERT_EQ(page().objectName(), QStringLiteral("general"));

    // Down the page in the order in which it is read.
    QStringList met;
    for (int i = 0; i < 8 && QApplication::focusWidget() != nullptr; ++i) {
        press(*QApplication::focusWidget(), Qt::Key_Tab);
        if (QApplication::focusWidget() != nullptr)
            met.append(QApplication::focusWidget()->objectName());
    }
    const QStringList expected{QStringLiteral("language"),
                               QStringLiteral("launchAtLogin"),
                               QStringLiteral("alwaysOnTop"),
                               QStringLiteral("edgeSnap"),
                               QStringLiteral("pauseNibbo"),
                               QStringLiteral("idleSleepMinutes"),
                               QStringLiteral("singleClickBehavior"),
                               QStringLiteral("doubleClickBehavior")};
    EXPECT_EQ(met, expected);

    auto& snap = part<ToggleSwitch>("edgeSnap");
    press(snap, Qt::Key_Space);
    EXPECT_FALSE(settings.current().edgeSnap);
}

TEST_F(SettingsWindowTest, wheelOverAControlScrollsThePageAndChangesNothing)
{
    controller.show(SettingsPageId::general);
    auto& choice = part<QComboBox>("doubleClickBehavior");
    QWheelEvent wheel(QPointF(5, 5), choice.mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&choice, &wheel);
    EXPECT_EQ(choice.currentIndex(), 0);
    EXPECT_EQ(settings.current().doubleClickBehavior, DoubleClickBehavior::petReaction);
}

TEST_F(SettingsWindowTest, accentFollowsTheColourAndTheDesktop)
{
    const auto accent = [this] { return part<QComboBox>("language").palette().color(QPalette::Highlight); };
    const QColor pink = accent();
    settings.change([](Settings& edited) { edited.themeColor = QStringLiteral("blue"); });
    EXPECT_NE(accent(), pink);
    EXPECT_EQ(accent(), theme::accent(QStringLiteral("blue"), QApplication::palette()));

    QApplication::setPalette(QPalette(QColor(0x30, 0x30, 0x36), QColor(0x20, 0x20, 0x26)));
    EXPECT_TRUE(
        waitFor([&] { return accent() == theme::accent(QStringLiteral("blue"), QApplication::palette()); }));
    EXPECT_TRUE(theme::isDark(part<QComboBox>("language").palette()));
    QApplication::setPalette(QPalette());
}

TEST_F(SettingsWindowTest, comesBackOnThePageThatItWasLeftOn)
{
    controller.show(SettingsPageId::appearance);
    controller.window()->close();
    EXPECT_FALSE(controller.window()->isVisible());
    controller.show();
    EXPECT_TRUE(controller.window()->isVisible());
    EXPECT_EQ(page().objectName(), QStringLiteral("appearance"));
    controller.show(SettingsPageId::sessions);
    EXPECT_EQ(page().objectName(), QStringLiteral("sessions"));
}

} // namespace
} // namespace nibbo::test
