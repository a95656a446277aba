#pragma once

#include "hooks/FileSystem.h"

#include <QString>

namespace nibbo {

struct ProviderSpec;

/// What an agent still asks of the user, or reads otherwise than our hooks are written, so that they run;
/// empty when there is nothing to say. Looks at the agent's own configuration where that can tell.
QString adviceFor(const ProviderSpec& spec, const QString& home, const FileSystem& files);

} // namespace nibbo
