#pragma once

// What the agents' tools are called and what they act on. The application phrases a tool by name; each agent
// has its own names for the same few things, so they are brought to the forms that the phrasing knows. A name
// that stands for nothing known is passed on as it is.

#include "bridge/JsonPath.h"

#include <string>
#include <string_view>

namespace nibbo::bridge {

enum class ToolClass
{
    shell,
    read,
    list,
    search,
    web,
    webSearch,
    write,
    patch,
    delegate,
    plan,
    question, // asks the user something that Allow and Deny cannot answer
    other,
};

struct Tool
{
    std::string shown; // the form that the phrasing knows, else the agent's own name
    ToolClass kind = ToolClass::other;
};

Tool toolNamed(std::string_view name);

// What the tool acts on, as the pet shows it while the tool runs: command line, path, pattern, query or
// address.
std::string subjectOf(const Tool& tool, const Json& input);

// The same for a request that the user decides on. A command line stays as it is; everything else is written
// so that no list of trusted commands can take it for one: paths are absolute, the rest names its tool in
// brackets.
std::string requestOf(const Tool& tool, const Json& input, std::string_view cwd);

// The question that a question tool puts to the user.
std::string questionIn(const Json& input);

} // namespace nibbo::bridge
