#pragma once

#include "hooks/SharedHooksWriter.h"

namespace nibbo {

/// Cursor's schema: plain entries, and a version at the top.
class CursorHooksWriter final : public SharedHooksWriter
{
public:
    using SharedHooksWriter::SharedHooksWriter;

protected:
    JsonValue makeEntry(const ProviderSpec& spec, const QString& event) const override;
    void prepareRoot(JsonValue& root) const override;
};

} // namespace nibbo
