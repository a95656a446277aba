#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>

namespace nibbo::test {

/// Runs the event loop until the condition holds; false after the limit. The limit is generous: it only ends
/// a failure.
template <typename Condition>
[[nodiscard]] bool waitFor(Condition condition, int limitMs = 30000)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > limitMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return true;
}

} // namespace nibbo::test
