#include "settings/SecretStore.h"

#include "base/NibboLog.h"

namespace nibbo {

QString apiKeyName(const QString& summaryProvider)
{
    return QStringLiteral("apiKey.") + summaryProvider;
}

void migrateOldKey(SecretStore& store)
{
    const QString oldName = QStringLiteral("anthropicAPIKey");
    const QString newName = apiKeyName(QStringLiteral("anthropic"));
    store.read(oldName, [&store, oldName, newName](const Result<std::optional<QString>>& old) {
        if (!old || !*old || (**old).isEmpty())
            return;
        const QString key = **old;
        store.read(newName, [&store, oldName, newName, key](const Result<std::optional<QString>>& present) {
            // A search that failed is not an absence: nothing may be overwritten on its word.
            if (!present || (*present && !(**present).isEmpty()))
                return;
            store.write(newName, key, [&store, oldName](const Result<void>& written) {
                if (!written) {
                    NibboLog::log(QStringLiteral("keyring: the old key stays where it is: ") +
                                  written.error());
                    return;
                }
                store.remove(oldName, [](const Result<void>& removed) {
                    if (!removed)
                        NibboLog::log(QStringLiteral("keyring: the old key was copied but not removed: ") +
                                      removed.error());
                });
            });
        });
    });
}

} // namespace nibbo
