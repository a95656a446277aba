#pragma once

#include "platform/WindowPlacement.h"

#include <QScreen>
#include <QWidget>

namespace nibbo {

/// A desktop of which nothing is known but that it shows windows.
class NullWindowPlacement final : public WindowPlacement
{
    Q_OBJECT

public:
    explicit NullWindowPlacement(QWidget& window)
        : m_window(window)
    {}

    void prepareToShow() override {}
    void setAbove(bool) override {}
    void moveTo(QPoint physical) override
    {
        const QPoint origin = m_window.screen() ? m_window.screen()->geometry().topLeft() : QPoint();
        m_window.move(origin + (physical - origin) / m_window.devicePixelRatioF());
    }
    void setInputRegion(const QRegion&) override {}
    bool blendsTransparency() const override { return true; }
    void cutTo(const QRegion&) override {}

private:
    QWidget& m_window;
};

} // namespace nibbo
