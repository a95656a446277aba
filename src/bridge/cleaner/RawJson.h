// A JSON value that is written back with the user's numbers as they stood: no size, exponent or fraction is
// ever rounded. Members keep their order, also where a name comes twice.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nibbo {

struct RawJson
{
    struct Member;
    enum class Kind
    {
        literal, // true, false, null or a number, in `text` as it is written
        string,  // decoded in `text`
        array,   // names in `children` are empty
        object
    };

    Kind kind = Kind::literal;
    std::string text;
    std::vector<Member> children;

    // Nothing for what is not strict JSON (comments are not), for broken UTF-8 and for extreme nesting.
    static std::optional<RawJson> parse(std::string_view text);
    // Indented by two spaces, slashes and letters unescaped, without a final newline.
    std::string dump() const;

    bool isArray() const { return kind == Kind::array; }
    bool isObject() const { return kind == Kind::object; }
};

struct RawJson::Member
{
    std::string name;
    RawJson value;
};

} // namespace nibbo
