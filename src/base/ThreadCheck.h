#pragma once

#include <QCoreApplication>
#include <QThread>

namespace nibbo {

/// For entry points that are bound to the main thread; checked in debug builds.
inline void assertMainThread()
{
    Q_ASSERT(QCoreApplication::instance() == nullptr ||
             QThread::currentThread() == QCoreApplication::instance()->thread());
}

} // namespace nibbo
