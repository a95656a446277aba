#pragma once

#include <QString>

namespace nibbo {

/// The folder of that name among what is shipped with the program (share/nibbo beside its bin), whether it
/// runs installed or from the build tree. Whether it exists is the caller's to see.
QString shippedFolder(const QString& name);

} // namespace nibbo
