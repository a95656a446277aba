#pragma once

// Looking things up in a payload whose shape nobody guarantees. A path is member names and list positions
// joined by dots; alternatives are separated by bars and the first that holds something usable wins:
// "cwd|workspace_roots.0". A value of another type than asked for counts as absent.

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace nibbo::bridge {

using Json = nlohmann::json;

// The first alternative that is present and not null; nullptr when there is none.
const Json* valueAt(const Json& root, std::string_view paths);

// The first alternative that is a non-empty string.
std::string textAt(const Json& root, std::string_view paths);

bool isTrueAt(const Json& root, std::string_view paths);

} // namespace nibbo::bridge
