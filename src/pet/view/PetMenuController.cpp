#include "pet/view/PetMenuController.h"

#include "pet/PetViewModel.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QVariant>

#include <array>

namespace nibbo {
namespace {

struct StateTitle
{
    PetState state;
    const char16_t* title;
};

/// English in both languages: the names under which artists know the states.
constexpr std::array<StateTitle, petStateCount> stateTitles{{
    {PetState::idle, u"Set Idle"},
    {PetState::thinking, u"Set Thinking"},
    {PetState::coding, u"Set Coding"},
    {PetState::reading, u"Set Reading"},
    {PetState::searching, u"Set Searching"},
    {PetState::running, u"Set Running"},
    {PetState::browsing, u"Set Browsing"},
    {PetState::planning, u"Set Planning"},
    {PetState::compactingContext, u"Set Compacting"},
    {PetState::responding, u"Set Responding"},
    {PetState::waitingApproval, u"Set Approval"},
    {PetState::waitingInput, u"Set Input"},
    {PetState::success, u"Set Success"},
    {PetState::warning, u"Set Warning"},
    {PetState::sleeping, u"Set Sleeping"},
    {PetState::dragging, u"Set Dragging"},
    {PetState::coffee, u"Set Coffee"},
    {PetState::relaxing, u"Set Relaxing"},
    {PetState::walking, u"Set Walking"},
    {PetState::drowsy, u"Set Drowsy"},
    {PetState::reactStartled, u"React Startled"},
    {PetState::reactGrumpy, u"React Grumpy"},
    {PetState::reactShoo, u"React Shoo"},
    {PetState::reactHappy, u"React Happy"},
    {PetState::reactShy, u"React Shy"},
}};

void runIfSet(const std::function<void()>& handler)
{
    if (handler)
        handler();
}

} // namespace

PetMenuController::PetMenuController(PetViewModel& viewModel, std::function<AppLanguage()> language,
                                     QObject* parent)
    : QObject(parent)
    , m_viewModel(viewModel)
    , m_language(std::move(language))
{}

std::unique_ptr<QMenu> PetMenuController::makeMenu()
{
    auto menu = std::make_unique<QMenu>();
    fill(*menu);
    return menu;
}

void PetMenuController::fill(QMenu& menu)
{
    menu.clear();
    const AppLanguage language = m_language();
    for (const auto& [state, title] : stateTitles) {
        QAction* action = menu.addAction(QString::fromUtf16(title));
        action->setData(rawValue(state));
        connect(action, &QAction::triggered, this, [this, action] { setState(action->data()); });
    }
    menu.addSeparator();
    connect(menu.addAction(text(language, u"Reset Nibbo Position", u"重置 Nibbo 位置")), &QAction::triggered,
            this, [this] { runIfSet(m_resetPosition); });
    connect(menu.addAction(text(language, u"Settings…", u"设置…")), &QAction::triggered, this,
            [this] { runIfSet(m_openSettings); });
    connect(menu.addAction(text(language, u"Quit Nibbo", u"退出 Nibbo")), &QAction::triggered, this,
            &QCoreApplication::quit);
}

void PetMenuController::setState(const QVariant& representedObject)
{
    const std::optional<PetState> state = petState(representedObject.toString());
    if (!state)
        return;
    m_viewModel.setState(*state);
    m_viewModel.speak(bubbleText(*state, m_language()));
}

} // namespace nibbo
