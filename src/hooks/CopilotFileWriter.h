#pragma once

#include "hooks/HookWriter.h"

namespace nibbo {

/// A hooks file of our own among Copilot's.
class CopilotFileWriter final : public HookWriter
{
public:
    using HookWriter::HookWriter;

    Result<void> install(const ProviderSpec& spec) override;
    Result<void> remove(const ProviderSpec& spec) override;
    bool isWired(const ProviderSpec& spec) const override;
};

} // namespace nibbo
