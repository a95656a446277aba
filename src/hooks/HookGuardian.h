#pragma once

#include "hooks/HookInstaller.h"

#include <QThread>

#include <functional>

namespace nibbo {

/// Keeps the hooks in place while the application runs: a `HookWatch` on a thread of its own. Main thread;
/// the destructor waits for a check under way.
class HookGuardian final
{
public:
    /// `makeInstaller` is called on the guardian's thread, and what its installers refer to outlives the
    /// guardian.
    explicit HookGuardian(std::function<HookInstaller()> makeInstaller);
    ~HookGuardian();
    HookGuardian(const HookGuardian&) = delete;
    HookGuardian& operator=(const HookGuardian&) = delete;

    void start();

private:
    class Thread final : public QThread
    {
    public:
        explicit Thread(std::function<HookInstaller()> makeInstaller);
        void run() override;

    private:
        std::function<HookInstaller()> m_makeInstaller;
    };

    Thread m_thread;
};

} // namespace nibbo
