#include "bridge/JsonPath.h"

#include <charconv>

namespace nibbo::bridge {

namespace {

const Json* follow(const Json& root, std::string_view path)
{
    const Json* here = &root;
    while (!path.empty()) {
        const std::size_t dot = path.find('.');
        const std::string_view step = path.substr(0, dot);
        path = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
        if (here->is_object()) {
            const auto member = here->find(step);
            if (member == here->end())
                return nullptr;
            here = &*member;
        } else if (here->is_array()) {
            std::size_t position = 0;
            const auto [end, error] = std::from_chars(step.data(), step.data() + step.size(), position);
            if (error != std::errc() || end != step.data() + step.size() || position >= here->size())
                return nullptr;
            here = &(*here)[position];
        } else {
            return nullptr;
        }
    }
    return here->is_null() ? nullptr : here;
}

template <typename Usable>
const Json* firstOf(const Json& root, std::string_view paths, Usable usable)
{
    while (!paths.empty()) {
        const std::size_t bar = paths.find('|');
        const Json* value = follow(root, paths.substr(0, bar));
        if (value && usable(*value))
            return value;
        paths = bar == std::string_view::npos ? std::string_view() : paths.substr(bar + 1);
    }
    return nullptr;
}

} // namespace

const Json* valueAt(const Json& root, std::string_view paths)
{
    return firstOf(root, paths, [](const Json&) { return true; });
}

std::string textAt(const Json& root, std::string_view paths)
{
    const Json* value = firstOf(root, paths, [](const Json& candidate) {
        return candidate.is_string() && !candidate.get_ref<const std::string&>().empty();
    });
    return value ? value->get_ref<const std::string&>() : std::string();
}

bool isTrueAt(const Json& root, std::string_view paths)
{
    const Json* value = valueAt(root, paths);
    return value && value->is_boolean() && value->get<bool>();
}

} // namespace nibbo::bridge
