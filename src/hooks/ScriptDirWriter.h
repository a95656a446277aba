#pragma once

#include "hooks/HookWriter.h"

namespace nibbo {

/// One script per event in Cline's folder; a script of the user's under such a name stays.
class ScriptDirWriter final : public HookWriter
{
public:
    using HookWriter::HookWriter;

    Result<void> install(const ProviderSpec& spec) override;
    Result<void> remove(const ProviderSpec& spec) override;
    bool isWired(const ProviderSpec& spec) const override;
};

} // namespace nibbo
