#pragma once

#include "agents/ProviderRegistry.h"
#include "pet/view/ApprovalCard.h"
#include "pet/view/BubbleView.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>

namespace nibbo::test {

inline constexpr BubbleStyle allStyles[] = {BubbleStyle::compact, BubbleStyle::normal, BubbleStyle::large};
inline constexpr AppLanguage bothLanguages[] = {AppLanguage::en, AppLanguage::zh};

inline BubbleContent narration(const QString& words, const std::optional<QString>& detail = {},
                               PetState state = PetState::coding)
{
    const AgentProvider provider(QStringLiteral("claude"));
    return {NarrationBubble{provider, detail, words}, state, provider};
}

inline ApprovalBubble requestFor(const QString& command, const QString& provider = QStringLiteral("claude"))
{
    ApprovalBubble request;
    request.prompt.id = QUuid::createUuid();
    request.prompt.eventId = QUuid::createUuid();
    request.prompt.provider = AgentProvider(provider);
    request.prompt.title = request.prompt.provider.displayName() + QStringLiteral(" wants to continue");
    request.prompt.command = command;
    return request;
}

inline BubbleContent contentOf(const ApprovalBubble& request)
{
    return {request, PetState::waitingApproval, request.prompt.provider};
}

inline QString manyLines(int count)
{
    QStringList lines;
    for (int line = 1; line <= count; ++line)
        lines += QStringLiteral("echo %1").arg(line);
    return lines.join(u'\n');
}

/// Gives the bubble the size it asks for, as the pet's window does.
inline void giveSize(BubbleView& view)
{
    view.resize(view.preferredSize());
    view.setTail(TailSide::bottom, view.width() / 2);
}

inline void sendMouse(QWidget& widget, QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton)
{
    const bool up = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, at, widget.mapToGlobal(at), button, up ? Qt::NoButton : Qt::MouseButtons(button),
                      Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

inline void press(QWidget& widget, QPointF at, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(widget, QEvent::MouseButtonPress, at, button);
}

inline void release(QWidget& widget, QPointF at, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(widget, QEvent::MouseButtonRelease, at, button);
}

/// Turns the wheel by notches, downwards when positive; true when the widget kept the event for itself.
inline bool turnWheel(QWidget& widget, QPointF at, int notches)
{
    QWheelEvent event(at, widget.mapToGlobal(at), QPoint(), QPoint(0, -120 * notches), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
    return event.isAccepted();
}

} // namespace nibbo::test
