#pragma once

#include "base/Result.h"

namespace nibbo {

/// Whether the desktop starts Nibbo when the user logs in. Main thread.
class LoginItem
{
public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    virtual Result<void> enable() = 0;
    virtual Result<void> disable() = 0;
    /// Puts an entry that exists right where the program has moved since; makes none.
    virtual void refresh() = 0;

    /// Enables or disables; a failure is logged, and enabling what is enabled does nothing.
    void set(bool enabled);
};

} // namespace nibbo
