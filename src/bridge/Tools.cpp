#include "bridge/Tools.h"

#include "bridge/Wire.h"

#include <algorithm>
#include <array>

namespace nibbo::bridge {

namespace {

struct ToolRow
{
    std::string_view name;  // lower case
    std::string_view shown; // empty: the phrasing knows the agent's own name
    ToolClass kind;
};

constexpr auto toolRows = std::to_array<ToolRow>({
    {"bash", "", ToolClass::shell},
    {"shell", "", ToolClass::shell},
    {"exec", "", ToolClass::shell},
    {"exec_command", "", ToolClass::shell},
    {"local_shell", "", ToolClass::shell},
    {"write_stdin", "", ToolClass::shell},
    {"run_shell_command", "Bash", ToolClass::shell},
    {"execute_command", "Bash", ToolClass::shell},
    {"run_commands", "Bash", ToolClass::shell},
    {"run_terminal_cmd", "Bash", ToolClass::shell},
    {"read", "", ToolClass::read},
    {"read_file", "Read", ToolClass::read},
    {"read_files", "Read", ToolClass::read},
    {"read_many_files", "Read", ToolClass::read},
    {"view", "Read", ToolClass::read},
    {"view_image", "", ToolClass::read},
    {"notebookread", "Read", ToolClass::read},
    {"ls", "", ToolClass::list},
    {"glob", "", ToolClass::list},
    {"list_directory", "LS", ToolClass::list},
    {"list_files", "LS", ToolClass::list},
    {"list_dir", "LS", ToolClass::list},
    {"list", "LS", ToolClass::list},
    {"grep", "", ToolClass::search},
    {"rg", "Grep", ToolClass::search},
    {"grep_search", "Grep", ToolClass::search},
    {"search_file_content", "Grep", ToolClass::search},
    {"search_files", "Grep", ToolClass::search},
    {"search_codebase", "Grep", ToolClass::search},
    {"codebase_search", "Grep", ToolClass::search},
    {"webfetch", "", ToolClass::web},
    {"web_fetch", "WebFetch", ToolClass::web},
    {"fetch_web_content", "WebFetch", ToolClass::web},
    {"fetchurl", "WebFetch", ToolClass::web},
    {"fetch", "WebFetch", ToolClass::web},
    {"websearch", "", ToolClass::webSearch},
    {"web_search", "WebSearch", ToolClass::webSearch},
    {"google_web_search", "WebSearch", ToolClass::webSearch},
    {"edit", "", ToolClass::write},
    {"multiedit", "", ToolClass::write},
    {"write", "", ToolClass::write},
    {"notebookedit", "", ToolClass::write},
    {"write_file", "Write", ToolClass::write},
    {"write_to_file", "Write", ToolClass::write},
    {"create", "Write", ToolClass::write},
    {"replace", "Edit", ToolClass::write},
    {"editor", "Edit", ToolClass::write},
    {"replace_in_file", "Edit", ToolClass::write},
    {"edit_file", "Edit", ToolClass::write},
    {"str_replace_editor", "Edit", ToolClass::write},
    {"apply_patch", "", ToolClass::patch},
    {"task", "", ToolClass::delegate},
    {"agent", "Task", ToolClass::delegate},
    {"spawn_agent", "Task", ToolClass::delegate},
    {"todowrite", "", ToolClass::plan},
    {"update_plan", "", ToolClass::plan},
    {"todo_write", "TodoWrite", ToolClass::plan},
    {"write_todos", "TodoWrite", ToolClass::plan},
    {"update_todo", "TodoWrite", ToolClass::plan},
    {"askuserquestion", "", ToolClass::question},
    {"ask_user_question", "AskUserQuestion", ToolClass::question},
    {"ask_user", "AskUserQuestion", ToolClass::question},
    {"ask_question", "AskUserQuestion", ToolClass::question},
    {"ask_followup_question", "AskUserQuestion", ToolClass::question},
    {"question", "AskUserQuestion", ToolClass::question},
    {"request_user_input", "AskUserQuestion", ToolClass::question},
    {"exitplanmode", "", ToolClass::question},
    {"exit_plan_mode", "ExitPlanMode", ToolClass::question},
    {"enterplanmode", "", ToolClass::question},
});

constexpr std::string_view pathKeys = "file_path|filePath|filepath|path|absolute_path|notebook_path|filename|"
                                      "files.0.path|files.0|paths.0|file_paths.0";

std::string_view keysOf(ToolClass kind)
{
    switch (kind) {
    case ToolClass::shell:
        return "command|cmd|script|chars|input";
    case ToolClass::read:
    case ToolClass::write:
    case ToolClass::patch:
        return pathKeys;
    case ToolClass::list:
        return "pattern|path|dir_path|directory|relative_path";
    case ToolClass::search:
        return "pattern|query|regex|queries.0";
    case ToolClass::web:
        return "url|urls.0|requests.0.url|prompt";
    case ToolClass::webSearch:
        return "query|queries.0|prompt";
    case ToolClass::delegate:
        return "description|prompt|task";
    case ToolClass::question:
    case ToolClass::plan:
    case ToolClass::other:
        break;
    }
    return "command|filePath|file_path|path|pattern|query|url";
}

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

// A command as a list: an argument vector, or several commands that run one after the other.
std::string joined(const Json& list, std::string_view separator)
{
    std::string result;
    for (const Json& entry : list) {
        const std::string text = entry.is_string() ? entry.get<std::string>() : textAt(entry, "command");
        if (text.empty())
            continue;
        if (!result.empty())
            result += separator;
        result += text;
    }
    return result;
}

std::string shellCommand(const Json& input)
{
    if (const Json* commands = valueAt(input, "commands"); commands && commands->is_array())
        return joined(*commands, " && ");
    if (const Json* command = valueAt(input, "command|cmd"); command && command->is_array())
        return joined(*command, " ");
    return textAt(input, keysOf(ToolClass::shell));
}

std::string absolute(std::string_view path, std::string_view cwd)
{
    if (path.starts_with('/') || path.starts_with("~/"))
        return std::string(path);
    return (cwd.empty() ? std::string("./") : std::string(cwd) + '/').append(path);
}

// The files that a patch names, one a line; what happens to a file beyond a change is said after its path.
std::string patchedFiles(std::string_view patch, std::string_view cwd)
{
    constexpr auto headers = std::to_array<std::pair<std::string_view, std::string_view>>({
        {"*** Add File: ", ""},
        {"*** Update File: ", ""},
        {"*** Delete File: ", " (deleted)"},
        {"*** Move to: ", " (new name)"},
    });
    std::string files;
    while (!patch.empty()) {
        const std::size_t end = patch.find('\n');
        std::string_view line = patch.substr(0, end);
        patch = end == std::string_view::npos ? std::string_view() : patch.substr(end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        for (const auto& [header, note] : headers) {
            if (!line.starts_with(header))
                continue;
            if (!files.empty())
                files += '\n';
            files += cwd.empty() ? std::string(line.substr(header.size()))
                                 : absolute(line.substr(header.size()), cwd);
            files += note;
        }
    }
    return files;
}

// The places in which the tools of a class keep what they act on.
std::string_view placesOf(ToolClass kind)
{
    switch (kind) {
    case ToolClass::shell:
        return "commands|command|cmd|script|chars|input";
    case ToolClass::read:
    case ToolClass::write:
    case ToolClass::patch:
        return "file_path|filePath|filepath|path|absolute_path|notebook_path|filename|files|paths|file_paths";
    case ToolClass::web:
        return "url|urls|requests";
    case ToolClass::webSearch:
        return "query|queries";
    default:
        return {};
    }
}

// Whether one place alone says what runs. The model chooses the keys: what stands in another place, or behind
// the first of a list, could be what really runs while something harmless is shown and judged.
bool saysOneThing(ToolClass kind, const Json& input)
{
    if (!input.is_object())
        return true;
    int filled = 0;
    std::string_view places = placesOf(kind);
    while (!places.empty()) {
        const std::size_t end = places.find('|');
        const auto value = input.find(std::string(places.substr(0, end)));
        places = end == std::string_view::npos ? std::string_view() : places.substr(end + 1);
        if (value == input.end() || value->is_null())
            continue;
        ++filled;
        if (!value->is_array())
            continue;
        const bool isWhole =
            kind == ToolClass::shell
                ? std::all_of(value->begin(), value->end(), [](const Json& e) { return e.is_string(); })
                : value->size() <= 1;
        if (!isWhole)
            return false;
    }
    return filled <= 1;
}

std::string bracketed(const Tool& tool, std::string_view text)
{
    return '[' + tool.shown + "] " + std::string(text);
}

} // namespace

Tool toolNamed(std::string_view name)
{
    const std::string low = lowered(name);
    const auto row =
        std::find_if(toolRows.begin(), toolRows.end(), [&](const ToolRow& r) { return r.name == low; });
    if (row == toolRows.end())
        return {std::string(name), ToolClass::other};
    return {std::string(row->shown.empty() ? name : row->shown), row->kind};
}

std::string subjectOf(const Tool& tool, const Json& input)
{
    if (tool.kind == ToolClass::shell)
        return shellCommand(input);
    if (tool.kind == ToolClass::patch) {
        const std::string files = patchedFiles(textAt(input, "command|patch|input"), {});
        return files.empty() ? textAt(input, pathKeys) : files.substr(0, files.find('\n'));
    }
    return textAt(input, keysOf(tool.kind));
}

std::string requestOf(const Tool& tool, const Json& input, std::string_view cwd)
{
    switch (saysOneThing(tool.kind, input) ? tool.kind : ToolClass::other) {
    case ToolClass::shell:
        if (const std::string command = shellCommand(input); !command.empty())
            return command;
        break;
    case ToolClass::patch:
        if (const std::string patch = textAt(input, "command|patch|input"); !patch.empty()) {
            const std::string files = patchedFiles(patch, cwd.empty() ? "." : cwd);
            // Files may be named in what was cut off; then the whole is too long to decide on.
            return files.empty() || patch.ends_with(cutMark) ? bracketed(tool, patch) : files;
        }
        [[fallthrough]];
    case ToolClass::read:
    case ToolClass::write:
        if (const std::string path = textAt(input, pathKeys); !path.empty())
            return absolute(path, cwd);
        break;
    case ToolClass::web:
    case ToolClass::webSearch:
        if (const std::string text = textAt(input, keysOf(tool.kind)); !text.empty())
            return text.starts_with("https://") || text.starts_with("http://") ? text : bracketed(tool, text);
        break;
    default:
        break;
    }
    if (input.is_string())
        return bracketed(tool, input.get_ref<const std::string&>());
    if (input.is_null() || input.empty())
        return bracketed(tool, {});
    return bracketed(tool, input.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string questionIn(const Json& input)
{
    return textAt(input, "questions.0.question|question|questions.0|prompt");
}

} // namespace nibbo::bridge
