#pragma once

#include "base/Time.h"

#include <optional>
#include <vector>

namespace nibbo {

/// What a pointer did to the pet, once it is clear what was meant.
class PetPointerActions
{
public:
    virtual ~PetPointerActions() = default;
    virtual void dragBegan() = 0;
    virtual void dragMoved() = 0;
    virtual void dragEnded() = 0;
    virtual void clicked() = 0;
    virtual void doubleClicked() = 0;
    /// The pointer came over the pet.
    virtual void hovered() = 0;
    virtual void menuAsked() = 0;
};

/// Tells a click from a drag and a single click from a double one. Positions are screen positions in
/// device-independent pixels; only events inside the hit square are to be handed in, and everything between a
/// press and its release. One thread.
class PetPointer
{
public:
    static constexpr double dragThreshold = 4;

    /// Two presses that lie this close in time and space are one double click.
    struct DoubleClick
    {
        Milliseconds interval{400};
        double distance = 5;
    };

    PetPointer(const Clock& clock, Scheduler& scheduler, PetPointerActions& actions, DoubleClick doubleClick);

    void press(double x, double y);
    void move(double x, double y);
    void release();
    void enter();
    void rightPress();
    /// The press is gone without a release (the grab was taken away): a drag ends, a click does not happen.
    void cancel();

    bool isDragging() const { return m_dragging; }
    void setDoubleClick(DoubleClick doubleClick) { m_doubleClick = doubleClick; }

private:
    struct Press
    {
        double x = 0;
        double y = 0;
        std::chrono::nanoseconds at{};
        int clickCount = 1;
    };

    const Clock& m_clock;
    Scheduler& m_scheduler;
    PetPointerActions& m_actions;
    DoubleClick m_doubleClick;
    bool m_dragging = false;
    std::optional<Press> m_press;
    std::optional<Press> m_lastClick;
    /// Single clicks that wait whether they become double; a newer one does not take back an older one.
    std::vector<ScheduledHandle> m_pendingClicks;
};

} // namespace nibbo
