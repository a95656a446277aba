#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace nibbo {

/// Turns SIGTERM, SIGINT and SIGHUP into a signal of the event loop, so that the program ends cleanly. One
/// per process.
class TerminationSignals final : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void terminationRequested();

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace nibbo
