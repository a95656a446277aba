#pragma once

#include "settings/SettingsStore.h"
#include "settings/SettingsTexts.h"
#include "settings/view/SettingsServices.h"
#include "settings/view/SettingsWidgets.h"

#include <QComboBox>
#include <QScrollArea>
#include <QSignalBlocker>

#include <functional>
#include <vector>

class QFileDialog;
class QLabel;
class QPushButton;
class QSlider;
class QSpinBox;
class QVBoxLayout;

namespace nibbo {

class Aside;

/// One page of the settings window: a column of groups. Its texts follow the language and its controls the
/// store, whoever changed it; a control that the user changes writes at once.
class SettingsPage : public QScrollArea
{
    Q_OBJECT
public:
    struct Wording
    {
        TextPair title;
        TextPair detail{u"", u""};
    };

    /// What pages share; outlives them.
    struct Context
    {
        const SettingsServices& services;
        Aside& aside;
        WheelGuard& wheelGuard;
    };

    SettingsPage(const Context& context, Wording heading);

    /// Nothing scrolls sideways, so a page is never narrower than what is on it.
    QSize minimumSizeHint() const override;

    QString title() const { return m_heading.title.in(language()); }

protected:
    AppLanguage language() const { return settings().language(); }
    QString say(const TextPair& text) const { return text.in(language()); }
    SettingsStore& settings() const { return m_context.services.settings; }
    const SettingsServices& services() const { return m_context.services; }
    Aside& aside() const { return m_context.aside; }

    /// Run now and whenever the language changes.
    void onLanguage(std::function<void()> tell);
    /// Run now and whenever a setting changes, or the language.
    void onSettings(std::function<void(const Settings&)> show);

    SettingsGroup* group(TextPair heading = {u"", u""});
    SettingRow* row(SettingsGroup& group, QWidget* control, Wording wording,
                    SettingRow::Place place = SettingRow::Place::beside);
    TextLabel* note(TextPair text, TextLabel::Tone tone = TextLabel::Tone::quiet);
    QPushButton* button(const char* name, TextPair text);
    /// A line of buttons that starts at the left.
    QWidget* buttons(const QList<QWidget*>& row);
    /// At the end of the column, in place of a group.
    void append(QWidget* widget);
    /// The same, with all the room that is left over.
    void fill(QWidget* widget);
    /// Run whenever the page comes into sight.
    virtual void opened() {}

    ToggleSwitch* toggle(SettingsGroup& group, const char* name, Wording wording, bool Settings::*field);
    QSlider* percentage(SettingsGroup& group, const char* name, Wording wording, double Settings::*field,
                        int least, int most);
    template <typename Enum>
    QComboBox* choice(SettingsGroup& group, const char* name, Wording wording, Enum Settings::*field);

    /// Asks in a box of its own and goes on at once; `yes` runs when the user agrees.
    void ask(const char* name, const QString& title, const QString& message, const QString& agree,
             std::function<void()> yes);
    void tell(const char* name, const QString& title, const QString& message);
    void tellFailure(const QString& title, const QString& why);
    /// Not shown yet; it goes when it is closed.
    QFileDialog* fileDialog(const char* name, TextPair title);

    void showEvent(QShowEvent* event) override;
    void guardWheel(QWidget* control) { control->installEventFilter(&m_context.wheelGuard); }

private:
    Context m_context;
    Wording m_heading;
    AppLanguage m_shownLanguage;
    QVBoxLayout* m_column;
    std::vector<std::function<void()>> m_texts;
    std::vector<std::function<void(const Settings&)>> m_controls;
};

template <typename Enum>
QComboBox* SettingsPage::choice(SettingsGroup& group, const char* name, Wording wording,
                                Enum Settings::*field)
{
    auto* const box = new QComboBox;
    box->setObjectName(QLatin1String(name));
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    guardWheel(box);
    for (const EnumRow<Enum>& each : rowsOf(Enum{}))
        box->addItem(QString(), QString::fromUtf16(each.raw));
    row(group, box, wording);
    onLanguage([this, box] {
        for (int i = 0; const EnumRow<Enum>& each : rowsOf(Enum{}))
            box->setItemText(i++, each.title.in(language()));
    });
    onSettings([box, field](const Settings& settings) {
        const QSignalBlocker quiet(box);
        box->setCurrentIndex(static_cast<int>(settings.*field));
    });
    connect(box, &QComboBox::currentIndexChanged, this, [this, field](int index) {
        settings().change([&](Settings& settings) { settings.*field = static_cast<Enum>(index); });
    });
    return box;
}

} // namespace nibbo
