#pragma once

// From a hook call to what the application is told. Pure but for the end of a transcript file, which is read
// when a turn has finished and the payload does not hold the agent's last words.

#include "bridge/Dialect.h"
#include "bridge/PayloadReader.h"

#include <string_view>
#include <vector>

namespace nibbo::bridge {

// In the order in which they are to be sent; often none, mostly one. Only the last can be an approval
// request.
std::vector<Event> translate(const Dialect& dialect, std::string_view hookEvent, const Payload& payload,
                             std::string_view home);

// What a request becomes that cannot be shown whole: nobody can decide on what they cannot read to its end.
Event tooLongToDecide(const Dialect& dialect, Event request);

} // namespace nibbo::bridge
