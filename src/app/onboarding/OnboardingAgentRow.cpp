#include "app/onboarding/OnboardingAgentRow.h"

#include "agents/ProviderRegistry.h"
#include "settings/SettingsStore.h"
#include "settings/view/SettingsWidgets.h"
#include "settings/view/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <array>

namespace nibbo {
namespace {

constexpr int symbolSide = 20;
constexpr int margin = 12;
constexpr double dotSide = 7;

constexpr std::array<TextPair, 4> statusTexts{{
    {u"Not checked", u"未检测"},
    {u"Installed", u"已安装"},
    {u"Not found", u"未找到"},
    {u"Running", u"运行中"},
}};

} // namespace

QString statusText(AgentStatus status, AppLanguage language)
{
    return statusTexts[static_cast<std::size_t>(status)].in(language);
}

OnboardingAgentRow::OnboardingAgentRow(const ProviderSpec& spec, SettingsStore& settings)
    : m_spec(spec)
    , m_settings(settings)
    , m_title(new QLabel(spec.title))
    , m_status(new TextLabel(TextLabel::Tone::quiet))
    , m_switch(new ToggleSwitch)
{
    setObjectName(spec.id);
    setToolTip(QStringLiteral("~/") + spec.configRelativePath);
    m_switch->setObjectName(QStringLiteral("enable"));
    m_status->setObjectName(QStringLiteral("status"));
    m_status->setFont(theme::scaled(theme::textFont(), 0.88));
    m_status->setWordWrap(false);
    m_status->setIndent(qRound(dotSide) + 5);
    auto* const texts = new QVBoxLayout;
    texts->setContentsMargins(0, 0, 0, 0);
    texts->setSpacing(0);
    texts->addWidget(m_title);
    texts->addWidget(m_status);
    auto* const line = new QHBoxLayout(this);
    line->setContentsMargins(margin + symbolSide + 10, 8, margin - 3, 7);
    line->setSpacing(8);
    line->addLayout(texts, 1);
    line->addWidget(m_switch, 0, Qt::AlignVCenter);

    connect(m_switch, &ToggleSwitch::toggled, this,
            [this](bool on) { m_settings.setEnabled(m_spec.id, on); });
    connect(&m_settings, &SettingsStore::changed, this, &OnboardingAgentRow::refresh);
    connect(&m_settings, &SettingsStore::statusesChanged, this, &OnboardingAgentRow::refresh);
    retranslate();
}

void OnboardingAgentRow::retranslate()
{
    m_switch->setAccessibleName(m_spec.title);
    refresh();
}

AgentStatus OnboardingAgentRow::status() const
{
    return m_settings.statuses().value(m_spec.id, AgentStatus::unknown);
}

void OnboardingAgentRow::refresh()
{
    const QSignalBlocker quiet(m_switch);
    m_switch->setChecked(m_settings.isEnabled(m_spec.id));
    m_status->setText(statusText(status(), m_settings.language()));
    m_switch->setAccessibleDescription(m_status->text());
    update();
}

void OnboardingAgentRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor symbol = palette().color(QPalette::WindowText);
    if (!m_switch->isChecked())
        symbol.setAlphaF(0.5F);
    painter.drawPixmap(
        QPointF(margin, (height() - symbolSide) / 2.0),
        theme::symbol(theme::providerSymbol(m_spec.id), symbolSide, devicePixelRatioF(), symbol));

    const QRectF line(m_status->geometry());
    const QRectF dot(line.left() + 1, line.center().y() - dotSide / 2, dotSide, dotSide);
    const bool dark = theme::isDark(palette());
    const QColor green = dark ? QColor(0x5f, 0xd0, 0x8b) : QColor(0x24, 0x9a, 0x5b);
    const QColor quiet = palette().color(QPalette::PlaceholderText);
    switch (status()) {
    case AgentStatus::running:
        painter.setPen(Qt::NoPen);
        painter.setBrush(green);
        break;
    case AgentStatus::connected:
        painter.setPen(QPen(green, 1.6));
        break;
    case AgentStatus::notFound:
    case AgentStatus::unknown:
        painter.setPen(QPen(quiet, 1.2));
        break;
    }
    painter.drawEllipse(dot.adjusted(0.5, 0.5, -0.5, -0.5));
}

void OnboardingAgentRow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()) && m_switch->isEnabled())
        m_switch->click();
}

} // namespace nibbo
