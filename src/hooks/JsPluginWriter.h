#pragma once

#include "hooks/HookWriter.h"

namespace nibbo {

/// A plug-in of our own in OpenCode's folder.
class JsPluginWriter final : public HookWriter
{
public:
    using HookWriter::HookWriter;

    Result<void> install(const ProviderSpec& spec) override;
    Result<void> remove(const ProviderSpec& spec) override;
    bool isWired(const ProviderSpec& spec) const override;
};

} // namespace nibbo
