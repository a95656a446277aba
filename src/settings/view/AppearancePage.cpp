#include "settings/view/AppearancePage.h"

#include "settings/view/Theme.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>
#include <QRadioButton>

#include <array>

namespace nibbo {
namespace {

struct ColourRow
{
    const char16_t* name;
    TextPair title;
};

// The first is what every text that is none of these means.
constexpr std::array<ColourRow, 4> colours{{
    {u"pink", {u"Pink", u"粉色"}},
    {u"blue", {u"Blue", u"蓝色"}},
    {u"green", {u"Green", u"绿色"}},
    {u"purple", {u"Purple", u"紫色"}},
}};

/// A dot of colour that is chosen like a radio button.
class ColourDot final : public QRadioButton
{
public:
    explicit ColourDot(const QString& colour)
        : m_colour(colour)
    {
        setObjectName(QStringLiteral("themeColor.") + colour);
        setCursor(Qt::PointingHandCursor);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override
    {
        const int side = qMax(28, fontMetrics().height() + 12);
        return {side, side};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint& point) const override { return rect().contains(point); }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor colour = theme::accent(m_colour, palette());
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(QRectF(rect()).adjusted(6, 6, -6, -6));
        painter.setBrush(Qt::NoBrush);
        if (isChecked()) {
            painter.setPen(QPen(colour, 2));
            painter.drawEllipse(QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5));
        }
        if (hasFocus()) {
            painter.setPen(QPen(palette().color(QPalette::WindowText), 1, Qt::DotLine));
            painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
        }
    }

private:
    QString m_colour;
};

} // namespace

AppearancePage::AppearancePage(const Context& context)
    : SettingsPage(context, {{u"Appearance", u"外观"},
                             {u"Colours, and what the bubble tells.", u"颜色，以及气泡显示的内容。"}})
{
    SettingsGroup* const look = group();
    auto* const dots = new QWidget;
    dots->setObjectName(QStringLiteral("themeColor"));
    auto* const line = new QHBoxLayout(dots);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(4);
    std::vector<QRadioButton*> all;
    for (const ColourRow& each : colours) {
        const QString name = QString::fromUtf16(each.name);
        auto* const dot = new ColourDot(name);
        all.push_back(dot);
        line->addWidget(dot);
        onLanguage([this, dot, title = each.title] {
            dot->setAccessibleName(say(title));
            dot->setToolTip(say(title));
        });
        connect(dot, &QRadioButton::clicked, this,
                [this, name] { settings().change([&](Settings& settings) { settings.themeColor = name; }); });
    }
    row(*look, dots,
        {{u"Accent colour", u"主题色"}, {u"Of the pet and of these windows.", u"用于宠物和这些窗口。"}});
    onSettings([all](const Settings& settings) {
        std::size_t chosen = 0;
        for (std::size_t i = 0; i < colours.size(); ++i) {
            if (settings.themeColor == QStringView(colours.at(i).name))
                chosen = i;
        }
        all[chosen]->setChecked(true);
    });

    SettingsGroup* const bubble = group({u"Bubble", u"气泡"});
    choice(*bubble, "bubbleStyle",
           {{u"Bubble size", u"气泡大小"}, {u"How much room its text gets.", u"文字占用的空间。"}},
           &Settings::bubbleStyle);
    toggle(*bubble, "showActivityLabel",
           {{u"Show activity", u"显示活动"},
            {u"A short line such as “Browsing the web” while an agent works.",
             u"agent 工作时显示一句简短说明，如“正在查阅网页”。"}},
           &Settings::showActivityLabel);
    toggle(*bubble, "showProviderChip",
           {{u"Show agent name", u"显示 agent 名称"},
            {u"Say on the bubble which agent speaks.", u"在气泡上标明是哪个 agent 在说话。"}},
           &Settings::showProviderChip);
}

} // namespace nibbo
