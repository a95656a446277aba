#include "platform/LoginItem.h"

#include "base/NibboLog.h"

namespace nibbo {

void LoginItem::set(bool enabled)
{
    if (enabled && isEnabled())
        return;
    const Result<void> done = enabled ? enable() : disable();
    if (!done)
        NibboLog::log(QStringLiteral("login item set(%1) failed: %2")
                          .arg(enabled ? QStringLiteral("true") : QStringLiteral("false"), done.error()));
}

} // namespace nibbo
