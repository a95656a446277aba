#pragma once

namespace nibbo {

/// Whether a tray of the kind before StatusNotifierItem (XEmbed) is there to take an icon. Main thread.
bool oldTrayExists();

} // namespace nibbo
