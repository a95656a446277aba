#include "hooks/ClaudeHooksWriter.h"

#include "agents/ProviderRegistry.h"

#include <utility>

namespace nibbo {

JsonValue ClaudeHooksWriter::makeEntry(const ProviderSpec& spec, const QString& event) const
{
    JsonValue hook = JsonValue::object();
    hook.setMember("type", JsonValue::string("command"));
    hook.setMember("command",
                   JsonValue::string(bridgeCommand(scope().generated, spec.id, event).toStdString()));
    hook.setMember("timeout", JsonValue::number(hookTimeout(spec.family, event)));
    JsonValue hooks = JsonValue::array();
    hooks.items().push_back(std::move(hook));
    JsonValue group = JsonValue::object();
    group.setMember("hooks", std::move(hooks));
    if (const auto matcher = hookMatcher(spec.family, event))
        group.setMember("matcher", JsonValue::string(matcher->toStdString()));
    return group;
}

} // namespace nibbo
