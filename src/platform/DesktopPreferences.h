#pragma once

#include <QObject>

#include <memory>
#include <optional>

namespace nibbo {

/// What the user told their desktop and we follow. Known a moment after start, and followed from then on.
/// Main thread.
class DesktopPreferences : public QObject
{
    Q_OBJECT
public:
    /// Nothing while the desktop has not said.
    std::optional<bool> prefersDark() const { return m_prefersDark; }
    bool reducesMotion() const { return m_reducesMotion; }

Q_SIGNALS:
    void changed();

protected:
    void setPrefersDark(std::optional<bool> dark);
    void setReducesMotion(bool reduces);

private:
    std::optional<bool> m_prefersDark;
    bool m_reducesMotion = false;
};

/// The one for the running desktop.
std::unique_ptr<DesktopPreferences> makeDesktopPreferences();

} // namespace nibbo
