// How strings are spelled in JSON; shared by what reads, holds and prints the tree.
#pragma once

#include <string_view>

namespace nibbo {

inline constexpr std::string_view jsonByteOrderMark = "\xEF\xBB\xBF";

inline bool isEscaped(std::string_view spelling)
{
    return spelling.find('\\') != std::string_view::npos;
}

/// -1 for what is none.
constexpr int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace nibbo
