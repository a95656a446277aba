#pragma once

#include "hooks/HookInstaller.h"

#include <QStringList>

#include <iosfwd>
#include <optional>

namespace nibbo {

/// What the installer of a command-line run works on: this installation, and the enable flags as they are
/// stored.
HookEnvironment storedHookEnvironment(const AppPaths& paths);

/// Does what the first of the hook flags among the arguments asks, and prints one line. Gives the exit
/// status: 0 also after a failure, which only the line tells; nothing when no argument is a hook flag. Needs
/// no display, no bus and no event loop.
std::optional<int> runHookCommand(const QStringList& arguments, HookInstaller& installer, std::ostream& out);

} // namespace nibbo
