// What a session store of 1,000 sessions costs under 1,000 events a second, against a store that only keeps
// the last event, in the same run and on the same event loop.
//
// usage: StoreBenchmark [seconds a run, default 10]

#include "base/NibboLog.h"
#include "base/Random.h"
#include "base/Time.h"
#include "pet/PetViewModel.h"
#include "sessions/AgentSessionStore.h"
#include "settings/Settings.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <optional>
#include <vector>

namespace {

using namespace nibbo;
using Steady = std::chrono::steady_clock;

constexpr int sessionCount = 1000;
constexpr int eventsPerSecond = 1000;

/// A working day of one agent, over and over.
AgentEvent eventNumber(int number)
{
    struct Row
    {
        AgentEventType type;
        const char16_t* tool;
        const char16_t* command;
        const char16_t* phase;
        const char16_t* say;
    };
    using T = AgentEventType;
    static constexpr std::array<Row, 10> day{{
        {T::thinking, nullptr, nullptr, nullptr, nullptr},
        {T::coding, u"Read", u"/home/me/src/main.cpp", nullptr, u"Let me look at the entry point first."},
        {T::coding, u"Read", u"/home/me/src/main.cpp", u"post", nullptr},
        {T::coding, u"Grep", u"resolveApproval", nullptr, nullptr},
        {T::coding, u"Edit", u"/home/me/src/main.cpp", nullptr,
         u"The verdict is written twice; I take one away."},
        {T::coding, u"Bash", u"cmake --build build && ctest --test-dir build", nullptr, nullptr},
        {T::approvalRequired, u"Bash", u"git push origin main", nullptr, nullptr},
        {T::coding, u"Bash", u"git push origin main", u"post", nullptr},
        {T::responding, nullptr, nullptr, nullptr, u"All tests pass and the change is pushed."},
        {T::taskCompleted, nullptr, nullptr, nullptr, nullptr},
    }};
    const auto given = [](const char16_t* text) {
        return text != nullptr ? std::optional(QString::fromUtf16(text)) : std::nullopt;
    };
    const int session = number % sessionCount;
    const Row& row = day[static_cast<std::size_t>(number / sessionCount + session) % day.size()];
    AgentEvent event;
    event.type = row.type;
    event.message = QStringLiteral("Make the tests pass");
    event.toolName = given(row.tool);
    event.command = given(row.command);
    event.phase = given(row.phase);
    event.say = given(row.say);
    event.cwd = QStringLiteral("/home/me/src");
    event.sessionId = QString::number(session);
    return event;
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

struct Figures
{
    double p50 = 0;
    double p99 = 0;
    double share = 0;
};

/// Hands the events to `apply` at their pace and measures each call in microseconds.
Figures run(int seconds, const std::function<void(const AgentEvent&)>& apply)
{
    const int total = seconds * eventsPerSecond;
    std::vector<AgentEvent> events;
    for (int number = 0; number < total; ++number)
        events.push_back(eventNumber(number));
    std::vector<double> times;
    times.reserve(events.size());
    QEventLoop loop;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    const Steady::time_point start = Steady::now();
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        const double due = std::chrono::duration<double>(Steady::now() - start).count() *
                           static_cast<double>(eventsPerSecond);
        while (static_cast<double>(times.size()) < due && times.size() < events.size()) {
            const Steady::time_point before = Steady::now();
            apply(events[times.size()]);
            times.push_back(std::chrono::duration<double, std::micro>(Steady::now() - before).count());
        }
        if (times.size() == events.size())
            loop.quit();
    });
    const double before = processorSeconds();
    timer.start(1);
    loop.exec();
    const double used = processorSeconds() - before;
    const double wall = std::chrono::duration<double>(Steady::now() - start).count();
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times[times.size() * 99 / 100], 100 * used / wall};
}

void print(const char* name, const Figures& figures)
{
    std::printf("%-24s %10.2f %10.2f %12.2f\n", name, figures.p50, figures.p99, figures.share);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 10;
    const QTemporaryDir folder;
    NibboLog::setFile(folder.filePath(QStringLiteral("nibbo.log")));

    Settings settings;
    settings.dangerousCommands = QStringList{QStringLiteral("rm -rf"), QStringLiteral("sudo")};
    const auto current = [&settings]() -> const Settings& { return settings; };
    const SystemClock clock;
    EventLoopScheduler scheduler;
    SystemRandom random;
    PetViewModel pet(clock, scheduler, random, current);
    AgentSessionStore store(pet, clock, scheduler, random,
                            {current, [](const AgentEvent&) {}, [](const QUuid&) {}, nullptr});
    store.start();
    for (int session = 0; session < sessionCount; ++session) {
        AgentEvent event = eventNumber(session);
        event.type = AgentEventType::inputRequired;
        store.apply(event);
    }
    std::optional<AgentEvent> last;

    const Figures lastOnly = run(seconds, [&last](const AgentEvent& event) { last = event; });
    const Figures whole = run(seconds, [&store](const AgentEvent& event) { store.apply(event); });

    std::printf("%d sessions, %d events a second, %d s each; %zu sessions at the end\n\n", sessionCount,
                eventsPerSecond, seconds, store.rows().size());
    std::printf("%-24s %10s %10s %12s\n", "", "p50 us", "p99 us", "% of a core");
    print("last event only", lastOnly);
    print("session store", whole);
    std::printf("%-24s %9.1fx %9.1fx %11.2fx\n", "ratio", whole.p50 / lastOnly.p50, whole.p99 / lastOnly.p99,
                whole.share / lastOnly.share);
    return 0;
}
