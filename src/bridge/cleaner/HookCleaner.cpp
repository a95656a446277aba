#include "HookCleaner.h"

#include "RawJson.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace nibbo {

namespace {

constexpr std::string_view ownershipMark = "nibbo-bridge";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

class FileDescriptor final
{
public:
    explicit FileDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_descriptor; }
    bool isOpen() const { return m_descriptor >= 0; }
    bool close()
    {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return descriptor < 0 || ::close(descriptor) == 0;
    }

private:
    int m_descriptor;
};

CleaningReport remains(const std::string& path, const std::string& why)
{
    return {CleaningResult::oursRemain, path + ": " + why};
}

CleaningReport remainsBySystem(const std::string& path, const char* what)
{
    const int error = errno;
    return remains(path, std::string(what) + ": " + std::strerror(error));
}

// What no agent can read either holds no hooks that would run.
CleaningReport unreadable(const std::string& path)
{
    if (errno == ENOENT || errno == ENOTDIR || errno == EISDIR || errno == ELOOP)
        return {};
    return remainsBySystem(path, "cannot be read");
}

// The content of a regular file, and what it was at that moment.
std::optional<std::string> readFile(const std::string& path, struct stat& status)
{
    // Not blocking, because a pipe in the place of a settings file would never let go.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return std::nullopt;
    if (!S_ISREG(status.st_mode)) {
        errno = EISDIR; // or a device or a pipe: whatever it is, it holds no settings
        return std::nullopt;
    }
    std::string text;
    std::string chunk(65536, '\0');
    for (;;) {
        const ssize_t count = ::read(file.get(), chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return text;
        text.append(chunk, 0, static_cast<std::size_t>(count));
    }
}

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool sameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// Through a file beside it that takes its place: the old content or the new one, never a part.
CleaningReport replaceFile(const std::string& path, const struct stat& before, const std::string& text)
{
    // A rename would get past a file that its owner has made read-only.
    if (::access(path.c_str(), W_OK) != 0)
        return remainsBySystem(path, "cannot be written");
    std::string temporary = path + ".nibbo-XXXXXX";
    FileDescriptor file(::mkstemp(temporary.data()));
    if (!file.isOpen())
        return remainsBySystem(path, "no room beside it");
    bool ready = writeAll(file.get(), text);
    if (ready && (before.st_uid != ::geteuid() || before.st_gid != ::getegid()))
        ready = ::fchown(file.get(), before.st_uid, before.st_gid) == 0;
    ready = ready && ::fchmod(file.get(), before.st_mode & 07777) == 0 && ::fsync(file.get()) == 0 &&
            file.close();
    struct stat now = {};
    if (ready && (::stat(path.c_str(), &now) != 0 || !sameFile(before, now))) {
        ::unlink(temporary.c_str());
        return remains(path, "changed meanwhile");
    }
    if (!ready || ::rename(temporary.c_str(), path.c_str()) != 0) {
        const CleaningReport report = remainsBySystem(path, "cannot be written");
        ::unlink(temporary.c_str());
        return report;
    }
    return {};
}

bool namesUs(const RawJson& value)
{
    return value.isObject() && std::ranges::any_of(value.children, [](const auto& member) {
               return member.name == "command" && member.value.kind == RawJson::Kind::string &&
                      member.value.text.find(ownershipMark) != std::string::npos;
           });
}

using Children = std::vector<RawJson::Member>;

// Like std::erase_if, with a predicate that may change what it is shown.
template <typename Predicate>
std::size_t removeWhere(Children& children, Predicate goes)
{
    Children kept;
    for (auto& child : children) {
        if (!goes(child))
            kept.push_back(std::move(child));
    }
    const std::size_t removed = children.size() - kept.size();
    children = std::move(kept);
    return removed;
}

// Whether the group itself is to go.
bool stripGroup(RawJson& group)
{
    if (namesUs(group))
        return true;
    if (!group.isObject())
        return false;
    bool emptied = false;
    for (auto& [name, entries] : group.children) {
        if (name != "hooks" || !entries.isArray())
            continue;
        const auto removed =
            std::erase_if(entries.children, [](const auto& entry) { return namesUs(entry.value); });
        emptied = emptied || (removed > 0 && entries.children.empty());
    }
    return emptied;
}

struct Stripping
{
    bool lostGroups = false;  // what decides whether the file is written
    bool lostEntries = false; // also within a group that keeps others
};

std::size_t countOurs(const RawJson& group)
{
    std::size_t count = namesUs(group) ? 1 : 0;
    for (const auto& [name, entries] : group.children) {
        if (group.isObject() && name == "hooks" && entries.isArray())
            count += static_cast<std::size_t>(std::ranges::count_if(
                entries.children, [](const auto& entry) { return namesUs(entry.value); }));
    }
    return count;
}

Stripping stripHooks(RawJson& hooks)
{
    Stripping stripping;
    for (auto& [event, groups] : hooks.children) {
        if (!groups.isArray())
            continue;
        for (const auto& group : groups.children)
            stripping.lostEntries = stripping.lostEntries || countOurs(group.value) > 0;
        if (removeWhere(groups.children, [](auto& group) { return stripGroup(group.value); }) > 0)
            stripping.lostGroups = true;
    }
    std::erase_if(hooks.children,
                  [](const auto& event) { return event.value.isArray() && event.value.children.empty(); });
    return stripping;
}

Stripping stripSettings(RawJson& settings)
{
    Stripping all;
    if (!settings.isObject())
        return all;
    removeWhere(settings.children, [&all](auto& member) {
        if (member.name != "hooks" || !member.value.isObject())
            return false;
        const Stripping stripping = stripHooks(member.value);
        all.lostGroups = all.lostGroups || stripping.lostGroups;
        all.lostEntries = all.lostEntries || stripping.lostEntries;
        return member.value.children.empty();
    });
    return all;
}

} // namespace

CleaningReport cleanSharedFile(const std::string& path)
{
    struct stat status = {};
    const std::optional<std::string> text = readFile(path, status);
    if (!text)
        return unreadable(path);
    std::string_view body = *text;
    const bool marked = body.starts_with(byteOrderMark);
    if (marked)
        body.remove_prefix(byteOrderMark.size());
    std::optional<RawJson> settings = RawJson::parse(body);
    if (!settings)
        return body.find(ownershipMark) == std::string::npos ? CleaningReport{}
                                                             : remains(path, "is not strict JSON");
    const Stripping stripping = stripSettings(*settings);
    if (!stripping.lostGroups)
        return stripping.lostEntries ? remains(path, "our entry stands in a group with others")
                                     : CleaningReport{};
    const std::unique_ptr<char, decltype(&std::free)> target(::realpath(path.c_str(), nullptr), &std::free);
    if (!target)
        return remainsBySystem(path, "cannot be found");
    return replaceFile(target.get(), status,
                       std::string(marked ? byteOrderMark : "") + settings->dump() + "\n");
}

CleaningReport removeOwnedFile(const std::string& path)
{
    struct stat status = {};
    const std::optional<std::string> text = readFile(path, status);
    if (!text)
        return unreadable(path);
    if (text->find(ownershipMark) == std::string::npos)
        return {};
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        return remainsBySystem(path, "cannot be removed");
    return {};
}

} // namespace nibbo
