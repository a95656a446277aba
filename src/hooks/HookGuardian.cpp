#include "hooks/HookGuardian.h"

#include "hooks/HookWatch.h"

#include <utility>

namespace nibbo {

HookGuardian::Thread::Thread(std::function<HookInstaller()> makeInstaller)
    : m_makeInstaller(std::move(makeInstaller))
{
    setObjectName(QStringLiteral("nibbo.hookguardian"));
}

void HookGuardian::Thread::run()
{
    const SystemClock clock;
    EventLoopScheduler scheduler;
    HookWatch watch(m_makeInstaller, scheduler, clock);
    watch.start();
    exec();
}

HookGuardian::HookGuardian(std::function<HookInstaller()> makeInstaller)
    : m_thread(std::move(makeInstaller))
{}

HookGuardian::~HookGuardian()
{
    m_thread.quit();
    m_thread.wait();
}

void HookGuardian::start()
{
    m_thread.start();
}

} // namespace nibbo
