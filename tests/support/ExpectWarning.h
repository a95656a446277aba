#pragma once

#include <QString>

namespace nibbo::test {

/// Warnings that hold this text are part of what the test provokes, from now on and in this process.
void expectWarning(const QString& part);

} // namespace nibbo::test
