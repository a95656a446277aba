#pragma once

// The way to the application: a Unix-domain stream socket in the user's support folder. Everything here gives
// up quietly; an application that is not there, or not well, must never hold up an agent.

#include "bridge/Descriptor.h"

#include <string>
#include <string_view>

namespace nibbo::bridge {

// Where the application listens for this home folder.
std::string socketPath(std::string_view home);

// A connection to the user's own application. None when nobody listens, or somebody else's process does.
Descriptor connectTo(const std::string& path);

// Whether the process at the other end is one of this user's.
bool belongsToThisUser(const Descriptor& socket);

// Blocks no longer than about two seconds.
bool sendAll(const Descriptor& socket, std::string_view bytes);

} // namespace nibbo::bridge
