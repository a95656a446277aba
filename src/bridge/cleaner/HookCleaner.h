// Takes our hooks out of the agents' files after the application was deleted. A file that cannot be changed
// safely is left as it is, and the result says so, because the launcher must stay while a hook names it.
#pragma once

#include <string>

namespace nibbo {

enum class CleaningResult
{
    clean,     // nothing of ours is in the file, or is any more, or there is no such file
    oursRemain // something of ours is left; `problem` says why
};

struct CleaningReport
{
    CleaningResult result = CleaningResult::clean;
    std::string problem;
};

// A file that holds the user's settings too. Removes the hook entries whose command names us, with the groups
// and events that this leaves empty, and writes only where some event lost a group. Links are followed; mode
// and owner stay; the file is replaced as a whole or not at all.
CleaningReport cleanSharedFile(const std::string& path);

// A file that was ours as a whole. One that does not name us is the user's own and stays.
CleaningReport removeOwnedFile(const std::string& path);

} // namespace nibbo
