#pragma once

#include "base/Result.h"
#include "hooks/FileSystem.h"
#include "hooks/GeneratedFiles.h"
#include "hooks/HookBackups.h"
#include "hooks/SafeWriter.h"

#include <QString>

#include <memory>

namespace nibbo {

struct ProviderSpec;
enum class HookMechanism;

/// What a writer works with during one operation; all of it outlives the writer.
struct HookScope
{
    const GeneratedFilesContext& generated;
    FileSystem& files;
    SafeWriter& writer;
    HookBackups& backups;

    QString path(const ProviderSpec& spec) const;
};

/// Puts the bridge into one agent's configuration in the way of one mechanism. Files of the user's are only
/// staged: they change when the writer is told to commit. Used under the installer's lock, but for `isWired`.
class HookWriter
{
public:
    explicit HookWriter(const HookScope& scope)
        : m_scope(scope)
    {}
    virtual ~HookWriter() = default;
    HookWriter(const HookWriter&) = delete;
    HookWriter& operator=(const HookWriter&) = delete;

    virtual Result<void> install(const ProviderSpec& spec) = 0;
    /// Takes out what is ours; a file without anything of ours is left untouched.
    virtual Result<void> remove(const ProviderSpec& spec) = 0;
    virtual bool isWired(const ProviderSpec& spec) const = 0;

    static std::unique_ptr<HookWriter> make(HookMechanism mechanism, const HookScope& scope);

protected:
    const HookScope& scope() const { return m_scope; }
    /// Whether the file can be read and holds the mark.
    bool fileHolds(const QString& path, const char* mark) const;
    /// Puts a file at one of our places aside that does not bear our mark, before it is replaced or removed.
    Result<void> keepForeignFile(const ProviderSpec& spec, const char* mark);

private:
    HookScope m_scope;
};

} // namespace nibbo
