#include "platform/linux/LinuxProcessList.h"

#include "base/FileDescriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

namespace nibbo {
namespace {

/// The process id that a folder of /proc is named after.
std::optional<qint64> processId(std::string_view name)
{
    qint64 id = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    return error == std::errc() && end == name.data() + name.size() ? std::optional(id) : std::nullopt;
}

/// The arguments with blanks between them; empty for kernel threads and for what has just ended. Beyond 64
/// KiB there are only the file names that somebody gave to a command.
QString commandLine(int folder, const char* process)
{
    const QByteArray path = QByteArray(process) + "/cmdline";
    const FileDescriptor file(::openat(folder, path.constData(), O_RDONLY | O_CLOEXEC));
    if (!file.isValid())
        return {};
    static thread_local std::array<char, 65536> buffer;
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count <= 0)
        return {};
    std::replace(buffer.begin(), buffer.begin() + count, '\0', ' ');
    return QString::fromUtf8(buffer.data(), count).trimmed();
}

} // namespace

std::vector<RunningProcess> LinuxProcessList::processes()
{
    std::vector<RunningProcess> result;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), ::closedir);
    if (!folder)
        return result;
    const int descriptor = ::dirfd(folder.get());
    const uid_t user = ::geteuid();
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::optional<qint64> id = processId(entry->d_name);
        struct stat status
        {};
        if (!id || ::fstatat(descriptor, entry->d_name, &status, 0) != 0 || status.st_uid != user)
            continue;
        if (QString line = commandLine(descriptor, entry->d_name); !line.isEmpty())
            result.push_back({*id, std::move(line)});
    }
    return result;
}

} // namespace nibbo
