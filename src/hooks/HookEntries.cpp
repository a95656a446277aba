#include "hooks/HookEntries.h"

#include "hooks/GeneratedFiles.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace nibbo {
namespace {

bool commandHolds(const JsonValue& entry, std::string_view mark)
{
    const JsonValue* const command = entry.member("command");
    return command != nullptr && command->text().find(mark) != std::string::npos;
}

bool groupHolds(const JsonValue& group, std::string_view mark)
{
    if (commandHolds(group, mark))
        return true;
    const JsonValue* const inner = group.member("hooks");
    return inner != nullptr && inner->isArray() &&
           std::any_of(inner->items().begin(), inner->items().end(),
                       [mark](const JsonValue& entry) { return commandHolds(entry, mark); });
}

bool listHolds(const JsonValue* list, std::string_view mark)
{
    return list != nullptr && list->isArray() &&
           std::any_of(list->items().begin(), list->items().end(),
                       [mark](const JsonValue& group) { return groupHolds(group, mark); });
}

/// What a user put into a marked group beside the marked entry stays; true when nothing is left of the group.
bool emptied(JsonValue& group, std::span<const std::string_view> marks)
{
    const auto marked = [marks](const JsonValue& entry) {
        return std::any_of(marks.begin(), marks.end(),
                           [&entry](std::string_view mark) { return commandHolds(entry, mark); });
    };
    if (marked(group))
        return true;
    JsonValue* const inner = group.member("hooks");
    if (inner == nullptr || !inner->isArray())
        return false;
    return std::erase_if(inner->items(), marked) > 0 && inner->items().empty();
}

void takeOut(JsonValue& hooks, std::span<const std::string_view> marks)
{
    std::erase_if(hooks.items(), [marks](JsonValue& list) {
        if (!list.isArray())
            return false;
        std::erase_if(list.items(), [marks](JsonValue& group) { return emptied(group, marks); });
        return list.items().empty();
    });
}

const JsonValue* hooksOf(const JsonValue& root)
{
    const JsonValue* const hooks = root.member("hooks");
    return hooks != nullptr && hooks->isObject() ? hooks : nullptr;
}

} // namespace

bool holdsBridge(const JsonValue& root)
{
    const JsonValue* const hooks = hooksOf(root);
    return hooks != nullptr &&
           std::any_of(hooks->items().begin(), hooks->items().end(),
                       [](const JsonValue& list) { return listHolds(&list, ownershipMark); });
}

bool holdsBridgeFor(const JsonValue& root, const QStringList& events)
{
    const JsonValue* const hooks = hooksOf(root);
    return std::all_of(events.begin(), events.end(), [hooks](const QString& event) {
        return hooks != nullptr && listHolds(hooks->member(event.toStdString()), ownershipMark);
    });
}

void putBridgeIn(JsonValue& root, const QStringList& events, const EntryMaker& makeEntry)
{
    JsonValue* hooks = root.member("hooks");
    if (hooks == nullptr || !hooks->isObject())
        hooks = &root.setMember("hooks", JsonValue::object());
    constexpr std::array<std::string_view, 2> marks{rivalMark, ownershipMark};
    takeOut(*hooks, marks);
    for (const QString& event : events) {
        const std::string name = event.toStdString();
        JsonValue* list = hooks->member(name);
        if (list == nullptr || !list->isArray())
            list = &hooks->setMember(name, JsonValue::array());
        list->items().push_back(makeEntry(event));
    }
}

bool hasForeignShape(const JsonValue& root, const QStringList& events)
{
    const JsonValue* const hooks = root.member("hooks");
    if (hooks == nullptr)
        return false;
    if (!hooks->isObject())
        return true;
    return std::any_of(events.begin(), events.end(), [hooks](const QString& event) {
        const JsonValue* const list = hooks->member(event.toStdString());
        return list != nullptr && !list->isArray();
    });
}

bool takeBridgeOut(JsonValue& root)
{
    if (!holdsBridge(root))
        return false;
    constexpr std::array<std::string_view, 1> marks{ownershipMark};
    takeOut(*root.member("hooks"), marks);
    return true;
}

} // namespace nibbo
