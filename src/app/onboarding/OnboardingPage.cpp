#include "app/onboarding/OnboardingPage.h"

#include "settings/view/Theme.h"

#include <QStyle>
#include <QVBoxLayout>

namespace nibbo {

OnboardingPage::OnboardingPage(const Context& context)
    : m_context(context)
{}

void OnboardingPage::addHeading(QVBoxLayout& column)
{
    m_title = new TextLabel;
    m_title->setFont(theme::heading(1.7));
    m_title->setAlignment(Qt::AlignHCenter);
    m_title->setObjectName(QStringLiteral("title"));
    m_subtitle = new TextLabel(TextLabel::Tone::quiet);
    m_subtitle->setFont(theme::scaled(theme::textFont(), 1.1));
    m_subtitle->setAlignment(Qt::AlignHCenter);
    m_subtitle->setObjectName(QStringLiteral("subtitle"));
    column.addWidget(m_title);
    column.addSpacing(2);
    column.addWidget(m_subtitle);
}

void OnboardingPage::setHeading(const QString& title, const QString& subtitle)
{
    m_title->setText(title);
    m_subtitle->setText(subtitle);
    setAccessibleName(title);
    setAccessibleDescription(subtitle);
}

bool reducesMotion(const SettingsServices& services, const QWidget& widget)
{
    return services.reducesMotion() || widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration) == 0;
}

} // namespace nibbo
