#include "settings/view/SettingsPage.h"

#include "settings/view/Boxes.h"
#include "settings/view/Theme.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace nibbo {
namespace {

constexpr int columnWidth = 760;

} // namespace

SettingsPage::SettingsPage(const Context& context, Wording heading)
    : m_context(context)
    , m_heading(heading)
    , m_shownLanguage(language())
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setAutoFillBackground(false);

    auto* const content = new QWidget;
    content->setMaximumWidth(columnWidth);
    m_column = new QVBoxLayout(content);
    m_column->setContentsMargins(28, 22, 28, 28);
    m_column->setSpacing(8);
    auto* const title = new TextLabel;
    title->setFont(theme::heading(1.6));
    m_column->addWidget(title);
    auto* const detail = new TextLabel(TextLabel::Tone::quiet);
    m_column->addWidget(detail);
    m_column->addStretch(1);
    setWidget(content);
    content->setAutoFillBackground(false);

    onLanguage([this, title, detail] {
        title->setText(say(m_heading.title));
        detail->setText(say(m_heading.detail));
        detail->setVisible(!detail->text().isEmpty());
    });
    connect(&settings(), &SettingsStore::changed, this, [this] {
        if (const AppLanguage now = language(); now != m_shownLanguage) {
            m_shownLanguage = now;
            for (const auto& tell : m_texts)
                tell();
        }
        for (const auto& show : m_controls)
            show(settings().current());
    });
}

QSize SettingsPage::minimumSizeHint() const
{
    return {widget()->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width(), 300};
}

void SettingsPage::onLanguage(std::function<void()> tell)
{
    tell();
    m_texts.push_back(std::move(tell));
}

void SettingsPage::onSettings(std::function<void(const Settings&)> show)
{
    show(settings().current());
    m_controls.push_back(std::move(show));
}

SettingsGroup* SettingsPage::group(TextPair heading)
{
    if (*heading.english != u'\0') {
        auto* const label = new TextLabel;
        label->setFont(theme::heading(1.0));
        label->setContentsMargins(2, 12, 0, 0);
        m_column->insertWidget(m_column->count() - 1, label);
        onLanguage([this, label, heading] { label->setText(say(heading)); });
    } else {
        m_column->insertSpacing(m_column->count() - 1, 6);
    }
    auto* const made = new SettingsGroup;
    m_column->insertWidget(m_column->count() - 1, made);
    return made;
}

SettingRow* SettingsPage::row(SettingsGroup& group, QWidget* control, Wording wording,
                              SettingRow::Place place)
{
    auto* const made = new SettingRow(control, place);
    group.add(made);
    onLanguage([this, made, wording] { made->setTexts(say(wording.title), say(wording.detail)); });
    return made;
}

void SettingsPage::append(QWidget* widget)
{
    m_column->insertWidget(m_column->count() - 1, widget);
}

void SettingsPage::fill(QWidget* widget)
{
    m_column->insertWidget(m_column->count() - 1, widget, 1);
    m_column->setStretch(m_column->count() - 1, 0);
}

void SettingsPage::showEvent(QShowEvent* event)
{
    QScrollArea::showEvent(event);
    opened();
}

TextLabel* SettingsPage::note(TextPair text, TextLabel::Tone tone)
{
    auto* const label = new TextLabel(tone);
    label->setFont(theme::scaled(theme::textFont(), 0.92));
    label->setContentsMargins(2, 0, 2, 0);
    m_column->insertWidget(m_column->count() - 1, label);
    onLanguage([this, label, text] { label->setText(say(text)); });
    return label;
}

QPushButton* SettingsPage::button(const char* name, TextPair text)
{
    auto* const made = new QPushButton;
    made->setObjectName(QLatin1String(name));
    made->setAutoDefault(false);
    onLanguage([this, made, text] {
        made->setText(say(text));
        theme::makeRoomy(*made);
    });
    return made;
}

QWidget* SettingsPage::buttons(const QList<QWidget*>& row)
{
    auto* const line = new QWidget;
    auto* const layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    for (QWidget* each : row)
        layout->addWidget(each);
    layout->addStretch(1);
    return line;
}

ToggleSwitch* SettingsPage::toggle(SettingsGroup& group, const char* name, Wording wording,
                                   bool Settings::*field)
{
    auto* const box = new ToggleSwitch;
    box->setObjectName(QLatin1String(name));
    row(group, box, wording);
    onSettings([box, field](const Settings& settings) {
        const QSignalBlocker quiet(box);
        box->setChecked(settings.*field);
    });
    connect(box, &ToggleSwitch::toggled, this,
            [this, field](bool on) { settings().change([&](Settings& settings) { settings.*field = on; }); });
    return box;
}

QSlider* SettingsPage::percentage(SettingsGroup& group, const char* name, Wording wording,
                                  double Settings::*field, int least, int most)
{
    constexpr int step = 5;
    auto* const holder = new QWidget;
    auto* const slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(QLatin1String(name));
    slider->setRange(least / step, most / step);
    slider->setPageStep(5);
    slider->setMinimumWidth(170);
    guardWheel(slider);
    auto* const value = new QLabel;
    value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("000 %")));
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* const line = new QHBoxLayout(holder);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(slider);
    line->addWidget(value);
    auto* const made = row(group, holder, wording);
    holder->setFocusProxy(slider);
    onLanguage([this, slider, made, wording] {
        made->control()->setAccessibleName(QString());
        made->control()->setAccessibleDescription(QString());
        slider->setAccessibleName(say(wording.title));
        slider->setAccessibleDescription(say(wording.detail));
    });
    onSettings([slider, value, field](const Settings& settings) {
        // What the file or an import brought may lie outside of what can be set here; the number tells.
        const double percent = std::clamp(settings.*field * 100, -1e6, 1e6);
        const QSignalBlocker quiet(slider);
        slider->setValue(qRound(percent / step));
        value->setText(QStringLiteral("%1 %").arg(qRound(percent)));
    });
    connect(slider, &QSlider::valueChanged, this, [this, field](int steps) {
        settings().change([&](Settings& settings) { settings.*field = steps * step / 100.0; });
    });
    return slider;
}

void SettingsPage::ask(const char* name, const QString& title, const QString& message, const QString& agree,
                       std::function<void()> yes)
{
    askUser(this, QLatin1String(name), {title, message}, agree, language(), std::move(yes));
}

void SettingsPage::tell(const char* name, const QString& title, const QString& message)
{
    tellUser(this, QLatin1String(name), {title, message}, language());
}

void SettingsPage::tellFailure(const QString& title, const QString& why)
{
    tell("failure", title, why);
}

QFileDialog* SettingsPage::fileDialog(const char* name, TextPair title)
{
    auto* const dialog = new QFileDialog(window(), say(title), services().paths.home());
    dialog->setObjectName(QLatin1String(name));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    return dialog;
}

} // namespace nibbo
