#include "hooks/CursorHooksWriter.h"

#include "agents/ProviderRegistry.h"

#include <algorithm>

namespace nibbo {
namespace {

bool isInteger(const JsonValue& value)
{
    const std::string& text = value.spelling();
    const auto digits = text.begin() + (text.starts_with('-') ? 1 : 0);
    return value.kind() == JsonValue::Kind::scalar && digits != text.end() &&
           std::all_of(digits, text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

JsonValue CursorHooksWriter::makeEntry(const ProviderSpec& spec, const QString& event) const
{
    JsonValue entry = JsonValue::object();
    entry.setMember("command",
                    JsonValue::string(bridgeCommand(scope().generated, spec.id, event).toStdString()));
    entry.setMember("timeout", JsonValue::number(hookTimeout(spec.family, event)));
    return entry;
}

void CursorHooksWriter::prepareRoot(JsonValue& root) const
{
    const JsonValue* const version = root.member("version");
    if (version == nullptr || !isInteger(*version))
        root.setMember("version", JsonValue::number(1));
}

} // namespace nibbo
