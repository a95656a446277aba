#pragma once

#include "base/Result.h"

#include <QString>

#include <functional>
#include <optional>

namespace nibbo {

/// Where keys are kept: the desktop's keyring and nothing else. Answers come later, on the main thread; a
/// store that goes away first answers nobody. A missing entry is no error.
class SecretStore
{
public:
    using Read = std::function<void(const Result<std::optional<QString>>&)>;
    using Done = std::function<void(const Result<void>&)>;

    virtual ~SecretStore() = default;
    virtual void read(const QString& name, Read answer) = 0;
    virtual void write(const QString& name, const QString& secret, Done answer) = 0;
    virtual void remove(const QString& name, Done answer) = 0;
};

/// The name under which a provider's key is kept.
QString apiKeyName(const QString& summaryProvider);

/// Moves the key that earlier versions kept under "anthropicAPIKey" to its present name. Where the present
/// name holds a key already, both stay. `store` must outlive the answers.
void migrateOldKey(SecretStore& store);

} // namespace nibbo
