#pragma once

#include "hooks/HookWriter.h"
#include "hooks/JsonText.h"

#include <optional>

namespace nibbo {

/// For settings files of the user's that hold our entries beside others. The file is backed up before each
/// install, edited in place and only when something changes; a file that is no JSON object is replaced, and
/// the log names its backup.
class SharedHooksWriter : public HookWriter
{
public:
    using HookWriter::HookWriter;

    Result<void> install(const ProviderSpec& spec) final;
    Result<void> remove(const ProviderSpec& spec) final;
    bool isWired(const ProviderSpec& spec) const final;

    /// Back to what the set holds of it, less entries of ours that were in it already; `remove` when the set
    /// holds nothing of it. What was written into the file since the install goes into a backup of its own.
    Result<void> restore(const ProviderSpec& spec, const QString& set);

protected:
    virtual JsonValue makeEntry(const ProviderSpec& spec, const QString& event) const = 0;
    virtual void prepareRoot(JsonValue& root) const;

private:
    struct Content
    {
        std::optional<QByteArray> bytes;
        mode_t mode = 0600;
    };
    Result<Content> readFile(const ProviderSpec& spec) const;
    JsonText withBridge(const ProviderSpec& spec, JsonText text) const;
    /// The bytes of the newest backup from which `wired` was made, or that says what `stripped` says.
    std::optional<QByteArray> origin(const ProviderSpec& spec, const JsonText& wired,
                                     const JsonText& stripped) const;
    QByteArray withoutBridge(const ProviderSpec& spec, const QByteArray& content) const;

    Result<void> keepLaterEdits(const ProviderSpec& spec, const QByteArray& backup, const Content& current);
};

} // namespace nibbo
