// Our entries among the user's in a settings file: found, put in, taken out. Pure functions on the tree. An
// entry is ours by its command; a group is an object of an event's list, with a command of its own or with a
// list "hooks" of objects that have one.
#pragma once

#include "hooks/JsonText.h"

#include <QStringList>

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace nibbo {

/// The mark of another application that competes for the same hooks; an install replaces its entries.
inline constexpr std::string_view rivalMark = "vibe-island";

using EntryMaker = std::function<JsonValue(const QString& event)>;

/// Whether any group under any event is ours.
bool holdsBridge(const JsonValue& root);
/// Whether every event has a group of ours.
bool holdsBridgeFor(const JsonValue& root, const QStringList& events);

/// Our group becomes the last one of each event; what we and the rival had there before goes. Makes "hooks"
/// when it is missing or no object, and an event's list when it is no list.
void putBridgeIn(JsonValue& root, const QStringList& events, const EntryMaker& makeEntry);
/// Whether putting ours in would drop something of the user's: a "hooks" or a list of another shape.
bool hasForeignShape(const JsonValue& root, const QStringList& events);
/// Takes out what is ours and nothing else. False, and nothing changed, when there is nothing of ours.
bool takeBridgeOut(JsonValue& root);

} // namespace nibbo
