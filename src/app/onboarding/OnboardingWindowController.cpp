#include "app/onboarding/OnboardingWindowController.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace nibbo {

OnboardingWindowController::OnboardingWindowController(SettingsServices services,
                                                       std::function<void()> onComplete)
    : m_services(std::move(services))
    , m_onComplete(std::move(onComplete))
{}

OnboardingWindowController::~OnboardingWindowController()
{
    delete m_window.data();
}

void OnboardingWindowController::show()
{
    if (!m_window) {
        m_window = new OnboardingView({m_services, m_aside});
        m_window->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_window, &OnboardingView::finished, this, &OnboardingWindowController::completeOnboarding);
        const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
        if (screen == nullptr)
            screen = QGuiApplication::primaryScreen();
        if (screen != nullptr) {
            QRect frame(QPoint(), m_window->size());
            frame.moveCenter(screen->availableGeometry().center());
            m_window->move(frame.topLeft());
        }
    }
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void OnboardingWindowController::completeOnboarding()
{
    m_window->close();
    // The callee may replace this controller.
    const std::function<void()> tell = m_onComplete;
    tell();
}

} // namespace nibbo
