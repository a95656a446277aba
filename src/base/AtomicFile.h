#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

namespace nibbo {

/// Replaces a file of our own at once: the old content or the new, never half of it. Makes the folder; mode
/// 0600. A symbolic link at `path` is followed.
Result<void> writeAtomically(const QString& path, const QByteArray& content);

/// The whole of a file; a file of more than `limit` bytes is an error.
Result<QByteArray> readWholeFile(const QString& path, qint64 limit = 64LL * 1024 * 1024);

} // namespace nibbo
