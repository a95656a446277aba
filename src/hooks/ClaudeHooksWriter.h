#pragma once

#include "hooks/SharedHooksWriter.h"

namespace nibbo {

/// One group of one command per event, with the matcher of the family: Claude, Codex, Gemini and their like.
class ClaudeHooksWriter final : public SharedHooksWriter
{
public:
    using SharedHooksWriter::SharedHooksWriter;

protected:
    JsonValue makeEntry(const ProviderSpec& spec, const QString& event) const override;
};

} // namespace nibbo
