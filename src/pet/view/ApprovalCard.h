#pragma once

#include "approval/CardGuard.h"
#include "approval/PressScale.h"
#include "base/Time.h"
#include "pet/PetBubbleKind.h"
#include "pet/view/BubbleLook.h"
#include "pet/view/CommandRows.h"
#include "pet/view/TextBlock.h"

#include <QWidget>

#include <array>
#include <optional>

namespace nibbo {

/// The content of the bubble when an agent asks permission: who asks and from where, the exact command, and
/// the only three buttons that can answer. It takes no focus and no key; every press and every turn of the
/// wheel over it is its own. `CardGuard` decides which presses count.
///
/// The bubble gives it its place, draws the frame under it and hides it. Main thread; clock and scheduler
/// outlive it.
class ApprovalCard final : public QWidget
{
    Q_OBJECT

public:
    ApprovalCard(const Clock& clock, Scheduler& scheduler, QWidget* parent);

    void setLook(const BubbleLook& look);
    /// Shows a request. The same request again, with the same words, changes nothing and keeps its buttons.
    void present(const ApprovalBubble& request);
    /// The request is over: nothing answers any more, the picture stays until the bubble has faded.
    void retire();
    /// The request that the buttons would answer.
    const std::optional<ApprovalBubble>& request() const { return m_request; }

    /// With all rows of the command that the style allows.
    QSize preferredSize() const;
    /// The bubble was moved, and the buttons with it.
    void placeChanged() { buttonsChanged(); }
    /// How much of the way to full presence the bubble is, and where it grows from, in own coordinates.
    void setPresence(double presence, QPointF origin);

    void scrollBy(double rows) { scrollTo(m_firstRow + rows); }

    QRect buttonRect(CardButton button) const;
    bool isLive(CardButton button) const { return m_guard.isLive(button); }
    QRect commandRect() const;
    /// Rows of the command below what is seen.
    int hiddenRows() const;
    const CommandRows& rows() const { return m_rows; }
    bool warns() const { return m_command.warns(); }

Q_SIGNALS:
    /// The user's answer to `request()`.
    void answered(nibbo::CardButton button);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    struct Geometry
    {
        QRectF header;
        QRectF facts;
        QRectF message;
        QRectF warning;
        QRectF command;
        QRectF footer;
        std::array<QRectF, 3> buttons;
        double height = 0.0;
        int visibleRows = 0;
    };

    void compose();
    Geometry arrange(double width, std::optional<double> height) const;
    void wrapCommand(double width);
    void rearrange();
    void buttonsChanged();
    void noteWhatIsSeen();
    void planWake();
    void animatePress();
    void scrollTo(double row);
    std::optional<CardButton> buttonAt(QPointF point) const;
    std::optional<CardButton> buttonUnder(const QMouseEvent& event) const;
    double padding() const { return m_metrics.padding; }

    void drawHeader(QPainter& painter) const;
    void drawFacts(QPainter& painter) const;
    void drawWarning(QPainter& painter) const;
    void drawCommand(QPainter& painter) const;
    void drawButton(QPainter& painter, CardButton button) const;

    const Clock& m_clock;
    Scheduler& m_scheduler;
    CardGuard m_guard;
    PressScale m_scale;
    ScheduledHandle m_wake;
    ScheduledHandle m_pressMotion;

    BubbleLook m_look;
    BubbleMetrics m_metrics;
    std::optional<ApprovalBubble> m_request;
    ApprovalBubble m_drawn; // stays for the fading picture
    CommandDisplay m_command;
    CommandRows m_rows;
    TextBlock m_message;
    QString m_title;
    QString m_folder;
    double m_rowsWidth = 0.0;
    double m_cardWidth = 0.0;
    double m_wantedHeight = 0.0;
    Geometry m_geometry;
    double m_firstRow = 0.0;
    double m_presence = 1.0;
    QPointF m_origin;
    std::optional<CardButton> m_hovered;
    std::optional<CardButton> m_pressedButton;
};

} // namespace nibbo
