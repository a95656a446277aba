#include "pet/view/BubblePresenter.h"

#include "approval/CardGuard.h"
#include "pet/PetViewModel.h"
#include "pet/view/BubbleView.h"
#include "settings/SettingsStore.h"

#include <QEvent>

namespace nibbo {

BubblePresenter::BubblePresenter(BubbleView& view, PetViewModel& viewModel, const SettingsStore& settings,
                                 QObject* parent)
    : QObject(parent)
    , m_view(view)
    , m_viewModel(viewModel)
    , m_settings(settings)
{
    connect(&viewModel, &PetViewModel::bubbleChanged, this, &BubblePresenter::showBubble);
    connect(&viewModel, &PetViewModel::stateChanged, this, &BubblePresenter::showBubble);
    connect(&viewModel, &PetViewModel::activeProviderChanged, this, &BubblePresenter::showBubble);
    connect(&settings, &SettingsStore::changed, this, &BubblePresenter::refreshLook);
    connect(&view, &BubbleView::answered, this, &BubblePresenter::answer);
    view.installEventFilter(this);
    refreshLook();
    showBubble();
}

void BubblePresenter::setDesktopScheme(std::optional<ColourScheme> scheme)
{
    m_desktopScheme = scheme;
    refreshLook();
}

void BubblePresenter::setReducedMotion(bool reduced)
{
    m_reducedMotion = reduced;
    refreshLook();
}

void BubblePresenter::setComposited(bool composited)
{
    m_composited = composited;
    refreshLook();
}

bool BubblePresenter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        refreshLook();
    return QObject::eventFilter(watched, event);
}

void BubblePresenter::refreshLook()
{
    const Settings& settings = m_settings.current();
    BubbleLook look;
    look.scheme = m_desktopScheme.value_or(schemeOf(m_view.palette()));
    look.style = settings.bubbleStyle;
    look.language = settings.effectiveLanguage();
    look.showActivityLabel = settings.showActivityLabel;
    look.showProviderChip = settings.showProviderChip;
    look.composited = m_composited;
    look.reducedMotion = m_reducedMotion;
    m_view.setLook(look);
}

void BubblePresenter::showBubble()
{
    const std::optional<PetBubbleKind>& bubble = m_viewModel.bubble();
    if (m_viewModel.bubbleVisible() && bubble)
        m_view.present({*bubble, m_viewModel.state(), m_viewModel.activeProvider()});
    else
        m_view.dismiss();
}

void BubblePresenter::answer(const QUuid& eventId, CardButton button)
{
    // The verdict belongs to the request that the user looked at and to no other.
    const auto* shown = m_viewModel.bubble() ? std::get_if<ApprovalBubble>(&*m_viewModel.bubble()) : nullptr;
    if (!shown || shown->prompt.eventId != eventId)
        return;
    if (button == CardButton::allowAll)
        m_viewModel.allowAll();
    else
        m_viewModel.submitApproval(button == CardButton::allow);
}

} // namespace nibbo
