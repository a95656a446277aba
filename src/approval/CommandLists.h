#pragma once

#include <QStringList>

namespace nibbo {

/// What the two command lists hold until the user edits them, and again after a reset; in this order.
QStringList defaultTrustedCommands();
QStringList defaultDangerousCommands();

} // namespace nibbo
