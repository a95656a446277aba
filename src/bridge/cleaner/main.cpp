// nibbo-cleaner HOME --shared FILE... --owned FILE...
// Run by the launcher once the application has been gone for a while; the files are relative to HOME. Exit
// status: 0 when nothing of ours is left, 1 when something is (standard error names it), 2 for wrong
// arguments.
#include "HookCleaner.h"

#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>

namespace {

int run(std::span<char*> arguments)
{
    if (arguments.size() < 2 || arguments[1][0] != '/') {
        std::fputs("usage: nibbo-cleaner HOME --shared FILE... --owned FILE...\n", stderr);
        return 2;
    }
    const std::string home = arguments[1];
    nibbo::CleaningReport (*clean)(const std::string&) = nullptr;
    int status = 0;
    for (const std::string_view argument : arguments.subspan(2)) {
        if (argument == "--shared") {
            clean = nibbo::cleanSharedFile;
        } else if (argument == "--owned") {
            clean = nibbo::removeOwnedFile;
        } else if (clean == nullptr) {
            std::fprintf(stderr, "nibbo-cleaner: %s stands before --shared or --owned\n", argument.data());
            return 2;
        } else {
            const nibbo::CleaningReport report = clean(home + '/' + std::string(argument));
            if (report.result == nibbo::CleaningResult::clean)
                continue;
            std::fprintf(stderr, "nibbo-cleaner: %s\n", report.problem.c_str());
            status = 1;
        }
    }
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::span(argv, static_cast<std::size_t>(argc)));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "nibbo-cleaner: %s\n", error.what());
        return 1;
    }
}
