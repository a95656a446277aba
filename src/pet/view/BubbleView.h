#pragma once

#include "base/Time.h"
#include "pet/PetBubbleKind.h"
#include "pet/PetState.h"
#include "pet/view/BubbleFrame.h"
#include "pet/view/BubbleLook.h"
#include "pet/view/BubblePane.h"
#include "pet/view/TextBlock.h"
#include "pet/view/TintedIcon.h"

#include <QUuid>

#include <optional>

namespace nibbo {

class ApprovalCard;
enum class CardButton;

/// What the bubble says and on whose behalf.
struct BubbleContent
{
    PetBubbleKind kind;
    /// Gives the symbol beside the activity line.
    PetState state = PetState::idle;
    /// Names the agent on the chip.
    std::optional<AgentProvider> provider;

    bool operator==(const BubbleContent&) const = default;
};

/// The speech bubble: a few lines of plain text with an optional provider chip and activity line, or the
/// approval card. It comes and goes softly, grows out of its tail, and ticks only while it moves. Only the
/// card takes clicks. Main thread; clock and scheduler outlive it.
class BubbleView final : public BubblePane
{
    Q_OBJECT

public:
    BubbleView(const Clock& clock, Scheduler& scheduler, QWidget* parent = nullptr);

    void setLook(const BubbleLook& look);
    const BubbleLook& look() const { return m_look; }
    void present(const BubbleContent& content);
    void dismiss();
    bool isPresent() const { return m_wanted; }

    QSize preferredSize() const override;
    QRegion clickRegion() const override;
    void setTail(TailSide side, int tip) override;

    /// Moves the card's command by rows, as the wheel does.
    void scrollCard(double rows);
    const ApprovalCard& card() const { return *m_card; }
    /// The words as they are drawn, line by line; empty for the card.
    QStringList drawnLines() const { return m_words.lines(); }

Q_SIGNALS:
    /// The user's answer to the request of this event.
    void answered(const QUuid& eventId, nibbo::CardButton button);

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    bool showsCard() const;
    void compose();
    void place();
    void announceSize();
    void startMotion();
    void step();
    void drawWords(QPainter& painter);

    const Clock& m_clock;
    Scheduler& m_scheduler;
    ApprovalCard* m_card;
    BubbleFrame m_frame;
    BubbleLook m_look;
    BubbleMetrics m_metrics;
    TailSide m_tailSide = TailSide::bottom;
    int m_tip = 0;

    std::optional<BubbleContent> m_content; // also while it fades
    bool m_wanted = false;
    QSize m_announced;
    std::chrono::nanoseconds m_movedAt{};
    double m_movedFrom = 0.0;
    double m_presence = 0.0;
    ScheduledHandle m_motion;

    // The words as they are laid out.
    TintedIcon m_chipIcon;
    QString m_chipName;
    TintedIcon m_activityIcon;
    TextBlock m_activity;
    TextBlock m_words;
    bool m_iconBesideWords = false;
    QSizeF m_bodySize;
};

} // namespace nibbo
