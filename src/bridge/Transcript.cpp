#include "bridge/Transcript.h"

#include "bridge/Descriptor.h"
#include "bridge/JsonPath.h"
#include "bridge/PayloadReader.h"

#include <algorithm>
#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace nibbo::bridge {

namespace {

constexpr std::size_t tailBytes = 256U << 10U;
constexpr std::size_t firstLook = 16U << 10U;

// One row per shape of transcript: a line of this type holds the agent's words at one of these places.
struct LineShape
{
    std::string_view typePath;
    std::string_view type;
    std::string_view words; // a text, or a list of parts with a "text" each
};

constexpr auto lineShapes = std::to_array<LineShape>({
    {"type", "assistant", "message.content|message.parts"},
    {"type", "assistant.message", "data.content"},
    {"event.part.type", "text", "event.part.text"},
    {"payload.role", "assistant", "payload.content"},
});

std::string textOf(const Json& words)
{
    if (words.is_string())
        return words.get<std::string>();
    std::string text;
    if (!words.is_array())
        return text;
    for (const Json& part : words) {
        if (isTrueAt(part, "thought"))
            continue;
        const std::string piece = textAt(part, "text");
        if (!text.empty() && !piece.empty())
            text += '\n';
        text += piece;
    }
    return text;
}

std::string wordsIn(std::string_view line)
{
    // Most lines are tool results; a look at the bytes spares reading them as JSON.
    if (line.find("assistant") == std::string_view::npos && line.find("\"text\"") == std::string_view::npos)
        return {};
    PayloadReader reader(PayloadReader::shownBytes);
    reader.feed(line);
    const auto payload = reader.take();
    if (!payload || isTrueAt(payload->root, "isSidechain"))
        return {};
    for (const LineShape& shape : lineShapes) {
        if (textAt(payload->root, shape.typePath) != shape.type)
            continue;
        if (const Json* words = valueAt(payload->root, shape.words))
            return textOf(*words);
    }
    return {};
}

// The newest words in `text`, which begins somewhere within a line unless it is the whole file.
std::string newestWords(std::string_view text, bool wholeFile)
{
    std::size_t end = text.size();
    while (end > 0) {
        const std::size_t feed = text.rfind('\n', end - 1);
        if (feed == std::string_view::npos && !wholeFile)
            break;
        const std::size_t begin = feed == std::string_view::npos ? 0 : feed + 1;
        std::string words = wordsIn(text.substr(begin, end - begin));
        if (!words.empty())
            return words;
        if (begin == 0)
            break;
        end = begin - 1;
    }
    return {};
}

std::string readRange(int fd, off_t from, std::size_t size)
{
    std::string text(size, '\0');
    std::size_t have = 0;
    while (have < size) {
        const ssize_t got = ::pread(fd, text.data() + have, size - have, from + static_cast<off_t>(have));
        if (got <= 0)
            break;
        have += static_cast<std::size_t>(got);
    }
    text.resize(have);
    return text;
}

} // namespace

std::string latestWords(const std::string& path)
{
    if (path.empty())
        return {};
    // Not blocking: the path could name a pipe that nobody writes to.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat facts = {};
    if (!file || ::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size <= 0)
        return {};
    const auto fileSize = static_cast<std::size_t>(facts.st_size);
    // The last words mostly stand right at the end.
    for (const std::size_t look : {firstLook, tailBytes}) {
        const std::size_t size = std::min(fileSize, look);
        const std::string text = readRange(file.get(), static_cast<off_t>(fileSize - size), size);
        std::string words = newestWords(text, size == fileSize);
        if (!words.empty() || size == fileSize)
            return words;
    }
    return {};
}

std::string kimiTranscript(std::string_view home, std::string_view session)
{
    // The session's name becomes part of a path.
    if (home.empty() || session.empty() || session.find('/') != std::string_view::npos ||
        session.starts_with('.'))
        return {};
    const std::string root = std::string(home) + "/.kimi-code/sessions";
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(root.c_str()), &::closedir);
    if (!folder)
        return {};
    constexpr int maxWorkspaces = 1024;
    for (int i = 0; i < maxWorkspaces; ++i) {
        const dirent* entry = ::readdir(folder.get());
        if (!entry)
            break;
        const std::string_view workspace = entry->d_name;
        if (workspace.starts_with('.'))
            continue;
        std::string path = root + '/' + std::string(workspace) + '/' + std::string(session);
        path += "/agents/main/wire.jsonl";
        if (::access(path.c_str(), R_OK) == 0)
            return path;
    }
    return {};
}

} // namespace nibbo::bridge
