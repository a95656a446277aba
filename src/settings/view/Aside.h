#pragma once

#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <utility>

namespace nibbo {

/// Runs slow work on another thread, one piece after the other in the order of asking, and brings the results
/// back to the main thread in that order. `done` is left out when the asker has gone meanwhile. The
/// destructor waits for what is under way, so that the work may use what outlives this object.
class Aside final : public QObject
{
    Q_OBJECT
public:
    explicit Aside(QObject* parent = nullptr)
        : QObject(parent)
    {
        m_pool.setMaxThreadCount(1);
    }
    ~Aside() override { m_pool.waitForDone(); }

    /// Both are copied.
    template <typename Work, typename Done>
    void run(QObject* asker, Work work, Done done)
    {
        m_pool.start([this, work, deliver = Delivery<Done>{asker, done}] {
            QMetaObject::invokeMethod(
                this, [deliver, result = work()] { deliver(result); }, Qt::QueuedConnection);
        });
    }

private:
    template <typename Done>
    struct Delivery
    {
        QPointer<QObject> asker;
        Done done;

        template <typename Answer>
        void operator()(const Answer& answer) const
        {
            if (asker)
                done(answer);
        }
    };

    QThreadPool m_pool;
};

} // namespace nibbo
