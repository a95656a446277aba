#pragma once

#include <QString>

namespace nibbo {

/// The folder above "bin", where everything that belongs to this installation or build lies.
QString installPrefix();
/// What the program reads at run time: pets, icons.
QString shareFolder();

} // namespace nibbo
