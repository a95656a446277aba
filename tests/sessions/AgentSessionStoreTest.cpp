#include "sessions/AgentSessionStore.h"

#include "pet/PetViewModel.h"
#include "sessions/AgentSummarizer.h"
#include "settings/Settings.h"
#include "support/ManualTime.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace nibbo {
namespace {

using namespace std::chrono_literals;
using test::ManualTime;
using test::ScriptedRandom;
using T = AgentEventType;
using P = PetState;

struct RecordingSummarizer final : AgentSummarizer
{
    QStringList asked;

    void summarize(const QString& sessionKey, const QString& say,
                   const std::optional<QString>& detail) override
    {
        asked.append(sessionKey + u'|' + say + u'|' + detail.value_or(QStringLiteral("-")));
    }
    void setDeliver(Deliver) override {}
};

QString utf8(const char* text)
{
    return QString::fromUtf8(text);
}

/// An event of Claude's session "a" unless told otherwise.
struct Said
{
    T type;
    const char* message = "";
    const char* command = nullptr;
    const char* tool = nullptr;
    const char* say = nullptr;
    const char* phase = nullptr;
    const char* cwd = nullptr;
    const char* session = "a";
    const char* provider = "claude";
};

AgentEvent event(const Said& said)
{
    const auto given = [](const char* text) { return text ? std::optional(utf8(text)) : std::nullopt; };
    AgentEvent event;
    event.provider = AgentProvider(utf8(said.provider));
    event.type = said.type;
    event.message = utf8(said.message);
    event.command = given(said.command);
    event.toolName = given(said.tool);
    event.say = given(said.say);
    event.phase = given(said.phase);
    event.cwd = given(said.cwd);
    event.sessionId = given(said.session);
    return event;
}

Said tool(const char* command, const char* session = "a")
{
    return {.type = T::coding, .command = command, .tool = "Bash", .session = session};
}

class AgentSessionStoreTest : public testing::Test
{
protected:
    AgentSessionStoreTest()
    {
        settings.language = AppLanguage::en;
        settings.dangerousCommands = QStringList{QStringLiteral("rm -rf")};
        store.start();
    }

    QUuid apply(const Said& said)
    {
        const AgentEvent next = event(said);
        store.apply(next);
        return next.id;
    }
    /// What the bubble says; empty when none is to be seen.
    QString seen() const
    {
        return pet.bubbleVisible() && pet.bubble() ? plainText(*pet.bubble()) : QString();
    }
    const ApprovalBubble* card() const
    {
        return pet.bubbleVisible() && pet.bubble() ? std::get_if<ApprovalBubble>(&*pet.bubble()) : nullptr;
    }
    QUuid requestOnCard() const { return card() ? card()->prompt.eventId : QUuid(); }
    void change(const std::function<void(Settings&)>& edit)
    {
        const Settings before = settings;
        edit(settings);
        store.settingsChanged(before);
    }

    Settings settings;
    ManualTime time;
    ScriptedRandom random;
    RecordingSummarizer summarizer;
    QStringList notified;
    std::vector<QUuid> abandoned;
    PetViewModel pet{time, time, random, [this]() -> const Settings& { return settings; }};
    AgentSessionStore store{pet,
                            time,
                            time,
                            random,
                            {[this]() -> const Settings& { return settings; },
                             [this](const AgentEvent& about) { notified.append(rawValue(about.type)); },
                             [this](const QUuid& id) { abandoned.push_back(id); }, &summarizer}};
};

// ---- What each event shows

TEST_F(AgentSessionStoreTest, EachEventHasItsPoseAndItsWords)
{
    struct Row
    {
        Said said;
        P pose;
        const char* english;
        const char* chinese;
        bool stands = false;
        const char* notified = "";
    };
    const std::vector<Row> rows{
        {{.type = T::agentStarted}, P::thinking, "Claude is thinking…", "Claude 思考中…"},
        {{.type = T::thinking, .say = "On it"}, P::thinking, "On it", "On it"},
        {{.type = T::thinking, .say = " \n"}, P::thinking, "Claude is thinking…", "Claude 思考中…"},
        {{.type = T::thinking, .provider = "new tool"},
         P::thinking,
         "New Tool is thinking…",
         "New Tool 思考中…"},
        {tool("make"), P::running, "Claude · Running make", "Claude · 正在运行 make"},
        {{.type = T::coding, .command = "a/b.txt", .tool = "Read", .say = "Let me look"},
         P::reading,
         "Reading b.txt - Let me look",
         "正在读取 b.txt - Let me look"},
        {{.type = T::contextCompacting},
         P::compactingContext,
         "Claude · Compacting context…",
         "Claude · 正在压缩上下文…"},
        {{.type = T::responding}, P::responding, "Claude responded.", "Claude 已回答。"},
        {{.type = T::responding, .say = "Here you are"}, P::responding, "Here you are", "Here you are"},
        {{.type = T::inputRequired, .message = "which one?"},
         P::waitingInput,
         "Claude needs your input in the terminal.",
         "Claude 需要你在终端里输入。",
         true},
        {{.type = T::approvalRequired, .command = "make"},
         P::waitingApproval,
         "Claude wants to continue: make",
         "Claude 想要继续: make",
         true,
         "approvalRequired"},
        {{.type = T::taskCompleted, .message = "All green"},
         P::success,
         "All green",
         "All green",
         false,
         "taskCompleted"},
        {{.type = T::taskCompleted}, P::success, "Done!", "完成！", false, "taskCompleted"},
        {{.type = T::taskFailed, .message = "Rate limit"}, P::warning, "Rate limit", "Rate limit", true},
        {{.type = T::riskyActionDetected, .message = "Blocked: x"},
         P::warning,
         "Blocked: x",
         "Blocked: x",
         true,
         "riskyActionDetected"},
    };
    for (const Row& row : rows) {
        for (const bool knownBefore : {false, true}) {
            for (const AppLanguage language : {AppLanguage::en, AppLanguage::zh}) {
                SCOPED_TRACE(std::string(row.english) + (knownBefore ? " after thinking" : " at first"));
                settings.language = language;
                if (knownBefore)
                    apply({.type = T::thinking, .provider = row.said.provider});
                notified.clear();
                apply(row.said);
                EXPECT_EQ(pet.state(), row.pose);
                EXPECT_EQ(seen(), utf8(language == AppLanguage::zh ? row.chinese : row.english));
                EXPECT_EQ(pet.activeProvider(), AgentProvider(utf8(row.said.provider)));
                EXPECT_EQ(notified.join(u' '), utf8(row.notified));
                time.advance(3s);
                EXPECT_EQ(pet.bubbleVisible() && pet.state() == row.pose, row.stands);
                apply({.type = T::agentStopped, .provider = row.said.provider});
                EXPECT_FALSE(store.hasActive());
                EXPECT_EQ(pet.state(), P::idle);
                EXPECT_EQ(seen(), QString());
            }
        }
    }
}

TEST_F(AgentSessionStoreTest, EventsWithoutASessionIdShareOneSession)
{
    apply({.type = T::thinking, .cwd = "/src/nibbo/", .session = nullptr});
    apply({.type = T::inputRequired, .session = nullptr});
    apply({.type = T::thinking, .session = nullptr, .provider = "codex"});
    const auto rows = store.rows();
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].key, QStringLiteral("claude:default"));
    EXPECT_EQ(rows[0].cwd, QStringLiteral("/src/nibbo/")) << "an event without a folder keeps the known one";
    EXPECT_EQ(rows[0].folder, QStringLiteral("nibbo"));
    EXPECT_TRUE(rows[0].waiting);
    EXPECT_EQ(rows[1].key, QStringLiteral("codex:default"));
}

TEST_F(AgentSessionStoreTest, RowsTellSinceWhenAndInWhichWords)
{
    apply(tool("make", "b"));
    time.advance(60s);
    apply(tool("make check", "b"));
    apply({.type = T::approvalRequired, .command = "make install"});
    time.advance(30s);
    const auto rows = store.rows();
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].words, QStringLiteral("make install"));
    EXPECT_EQ(rows[0].since.secsTo(time.wallNow()), 30);
    EXPECT_EQ(rows[1].words, QStringLiteral("Running make check"));
    EXPECT_EQ(rows[1].since.secsTo(time.wallNow()), 90) << "a step is no new state";
}

// ---- Which session is shown

TEST_F(AgentSessionStoreTest, TheStrongestStateWinsWhateverItsAge)
{
    const std::vector<std::pair<Said, P>> weakestFirst{
        {{.type = T::taskCompleted, .message = "x"}, P::success},
        {{.type = T::responding}, P::responding},
        {{.type = T::thinking}, P::thinking},
        {tool("make"), P::running},
        {{.type = T::contextCompacting}, P::compactingContext},
        {{.type = T::taskFailed, .message = "x"}, P::warning},
        {{.type = T::inputRequired}, P::waitingInput},
        {{.type = T::approvalRequired, .command = "make"}, P::waitingApproval},
    };
    for (std::size_t strong = 1; strong < weakestFirst.size(); ++strong) {
        for (std::size_t weak = 0; weak < strong; ++weak) {
            Said said = weakestFirst[strong].first;
            said.session = "strong";
            apply(said);
            time.advance(1s);
            said = weakestFirst[weak].first;
            said.session = "weak";
            apply(said);
            EXPECT_EQ(pet.state(), weakestFirst[strong].second)
                << rawValue(weakestFirst[weak].second).toStdString();
            apply({.type = T::agentStopped, .session = "strong"});
            EXPECT_EQ(pet.state(), weakestFirst[weak].second);
            apply({.type = T::agentStopped, .session = "weak"});
        }
    }
    apply({.type = T::approvalRequired, .command = "make", .session = "strong"});
    time.advance(600s);
    apply(tool("make", "weak"));
    EXPECT_EQ(pet.state(), P::waitingApproval);
}

TEST_F(AgentSessionStoreTest, BetweenEqualsTheLaterUpdateWinsAndTheFirstOnATie)
{
    apply(tool("one", "first"));
    apply(tool("two", "second"));
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running one"));
    time.advance(1s);
    apply(tool("three", "second"));
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running three"));
    time.advance(1s);
    apply(tool("four", "first"));
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running four"));
    // The shown session falls behind by itself: the other one is to come forward.
    apply({.type = T::responding, .session = "first"});
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running three"));
}

// ---- Steps

TEST_F(AgentSessionStoreTest, StepsArePacedAndTheOldestWaitingOneIsDropped)
{
    for (int i = 0; i < 14; ++i)
        apply({.type = T::coding, .command = qPrintable(QString::number(i)), .tool = "Bash"});
    QStringList shown;
    for (int i = 0; i < 30; ++i) {
        if (shown.isEmpty() || shown.last() != seen())
            shown.append(seen());
        time.advance(600ms);
    }
    QStringList expected{QStringLiteral("Claude · Running 0")};
    for (int i = 2; i < 14; ++i)
        expected.append(QStringLiteral("Claude · Running %1").arg(i));
    expected.append(QString());
    EXPECT_EQ(shown, expected);
}

TEST_F(AgentSessionStoreTest, AStepStaysForItsHold)
{
    apply(tool("one"));
    time.advance(400ms);
    apply({.type = T::coding, .command = "a.txt", .tool = "Read"});
    EXPECT_EQ(pet.state(), P::running);
    time.advance(100ms);
    EXPECT_EQ(pet.state(), P::running);
    time.advance(100ms);
    EXPECT_EQ(pet.state(), P::reading);
    time.advance(600ms);
    apply(tool("two"));
    EXPECT_EQ(pet.state(), P::running) << "the hold is over: no waiting";
}

TEST_F(AgentSessionStoreTest, ThinkingLeavesQueuedStepsPlaying)
{
    apply(tool("one"));
    apply(tool("two"));
    apply({.type = T::thinking, .say = "Hm"});
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running one"));
    time.advance(600ms);
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running two"));
    apply({.type = T::thinking, .say = "Hm"});
    EXPECT_EQ(pet.state(), P::thinking) << "nothing is queued any more";
}

TEST_F(AgentSessionStoreTest, WhateverElseComesEmptiesTheQueue)
{
    for (const T type : {T::contextCompacting, T::responding, T::approvalRequired, T::inputRequired,
                         T::taskCompleted, T::taskFailed, T::riskyActionDetected}) {
        apply(tool("one"));
        apply(tool("two"));
        apply({.type = type, .message = "now"});
        const P now = pet.state();
        EXPECT_NE(now, P::running);
        time.advance(1s);
        EXPECT_EQ(pet.state(), now);
        apply(tool("three"));
        EXPECT_EQ(seen(), QStringLiteral("Claude · Running three"));
        apply({.type = T::agentStopped});
    }
}

TEST_F(AgentSessionStoreTest, AFinishedToolKeepsItsPoseForItsHoldAndTurnsThinkingThen)
{
    const Said finished{.type = T::coding, .command = "make", .tool = "Bash", .phase = "post"};
    apply(tool("make"));
    time.advance(200ms);
    apply(finished);
    EXPECT_EQ(pet.state(), P::running);
    time.advance(400ms);
    EXPECT_EQ(pet.state(), P::thinking);
    EXPECT_EQ(seen(), QStringLiteral("Claude · Thinking…"));
    time.advance(1700s);
    EXPECT_EQ(store.rows().size(), 1U) << "an agent may think long between two tools";
    apply(tool("make"));
    EXPECT_EQ(pet.state(), P::running);

    // A tool whose beginning nobody saw is shown all the same.
    apply({.type = T::agentStopped});
    apply(finished);
    EXPECT_EQ(pet.state(), P::running);
    apply({.type = T::agentStopped});
    apply({.type = T::thinking});
    apply(finished);
    EXPECT_EQ(pet.state(), P::running);

    // Steps that wait are played before the pet thinks.
    apply({.type = T::agentStopped});
    apply(tool("one"));
    apply({.type = T::coding, .command = "a.txt", .tool = "Read"});
    apply(finished);
    time.advance(600ms);
    EXPECT_EQ(pet.state(), P::reading);
    time.advance(600ms);
    EXPECT_EQ(pet.state(), P::thinking);
}

// ---- Time-outs

TEST_F(AgentSessionStoreTest, SessionsEndByThemselves)
{
    struct Row
    {
        Said said;
        Seconds stays;
    };
    const std::vector<Row> rows{
        {{.type = T::thinking}, 8s},
        {{.type = T::responding}, 3s},
        {{.type = T::taskCompleted, .message = "x"}, 4s},
        {{.type = T::contextCompacting}, 20s},
        {{.type = T::inputRequired}, 1800s},
        {{.type = T::approvalRequired, .command = "make"}, 1800s},
        {{.type = T::taskFailed, .message = "x"}, 1800s},
        {tool("make"), 1800s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(rawValue(row.said.type).toStdString());
        apply(row.said);
        time.advance(row.stays);
        EXPECT_TRUE(store.hasActive());
        time.advance(600ms);
        EXPECT_FALSE(store.hasActive());
        EXPECT_FALSE(isPersistent(pet.state()));
        EXPECT_FALSE(pet.bubbleVisible());
    }
    EXPECT_EQ(abandoned.size(), 1U) << "the forgotten request is let go";
}

TEST_F(AgentSessionStoreTest, CompactionThatNothingFollowsTurnsIntoThinking)
{
    apply({.type = T::contextCompacting});
    time.advance(12s);
    EXPECT_EQ(pet.state(), P::compactingContext);
    time.advance(200ms);
    EXPECT_EQ(pet.state(), P::thinking);
    EXPECT_EQ(store.rows().front().since, time.wallNow());
    time.advance(8s);
    EXPECT_EQ(pet.state(), P::thinking);
    time.advance(200ms);
    EXPECT_FALSE(store.hasActive());
}

TEST_F(AgentSessionStoreTest, AFloodOfSessionsLosesTheWeakest)
{
    const QUuid request = apply({.type = T::approvalRequired, .command = "make"});
    for (int i = 0; i < 4200; ++i)
        apply({.type = T::thinking, .session = qPrintable(QString::number(i))});
    EXPECT_EQ(store.rows().size(), 4096U);
    EXPECT_EQ(requestOnCard(), request);
}

// ---- Approvals

TEST_F(AgentSessionStoreTest, TheCardHoldsTheRequest)
{
    const QUuid request = apply(
        {.type = T::approvalRequired, .message = "Clean up", .command = "RM -RF build", .tool = "Bash"});
    ASSERT_NE(card(), nullptr);
    const ApprovalPrompt prompt = card()->prompt;
    EXPECT_EQ(prompt.eventId, request);
    EXPECT_EQ(prompt.command, QStringLiteral("RM -RF build"));
    EXPECT_EQ(prompt.message, QStringLiteral("Clean up"));
    EXPECT_EQ(prompt.risk, ApprovalRisk::risky);
    EXPECT_EQ(card()->othersWaiting, 0);
    // Other agents' events must not make it a new card: its buttons would be dead again each time.
    apply(tool("make", "b"));
    EXPECT_EQ(card()->prompt, prompt);

    apply({.type = T::approvalRequired, .message = "Only words"});
    EXPECT_EQ(card()->prompt.command, QStringLiteral("Only words"));
    EXPECT_EQ(card()->prompt.risk, ApprovalRisk::normal);
    EXPECT_NE(card()->prompt.id, prompt.id);
}

TEST_F(AgentSessionStoreTest, AnAnswerLetsTheSessionGoOn)
{
    store.resolveApproval(apply({.type = T::approvalRequired, .command = "make", .tool = "Bash"}), true);
    EXPECT_EQ(pet.state(), P::running);
    EXPECT_EQ(seen(), QStringLiteral("Claude · Running make"));

    store.resolveApproval(apply({.type = T::approvalRequired, .command = "make", .tool = "Bash"}), false);
    EXPECT_EQ(pet.state(), P::thinking);
    EXPECT_EQ(seen(), QStringLiteral("Claude is thinking…"));
    time.advance(10s);
    EXPECT_FALSE(store.hasActive());
    EXPECT_TRUE(abandoned.empty()) << "an answered request is not abandoned as well";
}

TEST_F(AgentSessionStoreTest, AnUnknownOrLateAnswerDoesNothing)
{
    const QUuid request = apply({.type = T::approvalRequired, .command = "make"});
    store.resolveApproval(QUuid::createUuid(), true);
    EXPECT_EQ(requestOnCard(), request);
    apply({.type = T::taskCompleted, .message = "x"});
    store.resolveApproval(request, true);
    EXPECT_EQ(pet.state(), P::success);
}

TEST_F(AgentSessionStoreTest, AnyLaterSignOfTheSessionTakesItsCardAway)
{
    for (const T type :
         {T::agentStarted, T::thinking, T::coding, T::contextCompacting, T::responding, T::approvalRequired,
          T::taskCompleted, T::taskFailed, T::riskyActionDetected, T::agentStopped}) {
        SCOPED_TRACE(rawValue(type).toStdString());
        abandoned.clear();
        const QUuid request = apply({.type = T::approvalRequired, .command = "make"});
        const QUuid later = apply({.type = type, .message = "x"});
        EXPECT_EQ(abandoned, std::vector{request});
        EXPECT_EQ(requestOnCard(), type == T::approvalRequired ? later : QUuid());
        apply({.type = T::agentStopped});
    }
}

TEST_F(AgentSessionStoreTest, OtherSessionsAndTheAgentsOwnReminderLeaveTheCard)
{
    const QUuid request = apply({.type = T::approvalRequired, .command = "make"});
    apply({.type = T::inputRequired, .message = "Claude needs your permission"});
    apply({.type = T::taskCompleted, .message = "x", .session = "b"});
    apply({.type = T::agentStopped, .provider = "codex"});
    EXPECT_TRUE(abandoned.empty());
    EXPECT_EQ(requestOnCard(), request);
}

TEST_F(AgentSessionStoreTest, OfSeveralRequestsTheNewestIsShownAndTheOthersAreCounted)
{
    const auto ask = [this](const char* session) {
        return apply({.type = T::approvalRequired, .command = "make", .session = session});
    };
    const QUuid first = ask("a");
    const QUuid second = ask("b");
    time.advance(10s);
    const QUuid third = ask("c");
    EXPECT_EQ(requestOnCard(), third);
    EXPECT_EQ(card()->othersWaiting, 2);

    apply(tool("make", "a"));
    EXPECT_EQ(requestOnCard(), third);
    EXPECT_EQ(card()->othersWaiting, 1);
    EXPECT_EQ(abandoned, std::vector{first});

    store.resolveApproval(third, true);
    EXPECT_EQ(requestOnCard(), second);
    EXPECT_EQ(card()->othersWaiting, 0);
    store.resolveApproval(second, false);
    EXPECT_EQ(card(), nullptr);

    // At the very same moment, too, the newest one is on the card.
    ask("x");
    const QUuid newest = ask("a");
    EXPECT_EQ(requestOnCard(), newest);
}

TEST_F(AgentSessionStoreTest, AnsweringOnThePetBringsTheNextCard)
{
    QObject::connect(&pet, &PetViewModel::approvalSubmitted, &store, &AgentSessionStore::resolveApproval);
    const QUuid first = apply({.type = T::approvalRequired, .command = "make", .session = "a"});
    time.advance(1s);
    apply({.type = T::approvalRequired, .command = "make", .session = "b"});
    pet.allowAll();
    EXPECT_EQ(requestOnCard(), first) << "the others are not answered by it";
    pet.submitApproval(true);
    EXPECT_EQ(pet.state(), P::coding);
    EXPECT_EQ(card(), nullptr);
}

TEST_F(AgentSessionStoreTest, AChangeOfModeAnswersNobody)
{
    const QUuid request = apply({.type = T::approvalRequired, .command = "make"});
    change([](Settings& edited) {
        edited.approvalMode = ApprovalMode::allowAll;
        edited.bypassRiskCheck = true;
    });
    time.advance(10s);
    EXPECT_EQ(requestOnCard(), request);
}

// ---- Summaries

TEST_F(AgentSessionStoreTest, ASummaryStandsForItsOwnWordsOnly)
{
    const QString key = QStringLiteral("claude:a");
    apply({.type = T::responding, .say = "A long story"});
    store.setSummary(key, QStringLiteral("Other"), QStringLiteral("A story"));
    store.setSummary(QStringLiteral("claude:b"), QStringLiteral("Other"), QStringLiteral("A long story"));
    EXPECT_EQ(seen(), QStringLiteral("A long story"));
    store.setSummary(key, QStringLiteral("Short"), QStringLiteral("A long story"));
    EXPECT_EQ(seen(), QStringLiteral("Short"));
    apply({.type = T::responding, .say = "A long story"});
    EXPECT_EQ(seen(), QStringLiteral("Short"));
    apply({.type = T::responding, .say = "News"});
    EXPECT_EQ(seen(), QStringLiteral("News"));
    store.setSummary(key, QStringLiteral("Short"), QStringLiteral("A long story"));
    EXPECT_EQ(seen(), QStringLiteral("News"));
    store.setSummary(key, QStringLiteral("  "), QStringLiteral("News"));
    EXPECT_EQ(seen(), QStringLiteral("News")) << "a blank summary is none";
    apply({.type = T::thinking});
    EXPECT_EQ(seen(), QStringLiteral("Claude is thinking…"));
}

TEST_F(AgentSessionStoreTest, TheSummarizerIsAskedForToolsAndAnswersThatSaySomething)
{
    apply({.type = T::thinking, .say = "no"});
    apply({.type = T::coding, .command = "a.txt", .tool = "Read", .say = "Looking"});
    apply({.type = T::coding, .command = "a.txt", .tool = "Read", .say = "Seen", .phase = "post"});
    apply({.type = T::coding, .command = "a.txt", .tool = "Read", .say = ""});
    apply({.type = T::responding, .say = "Done"});
    apply({.type = T::taskCompleted, .say = "no"});
    EXPECT_EQ(summarizer.asked, (QStringList{QStringLiteral("claude:a|Looking|Reading a.txt"),
                                             QStringLiteral("claude:a|Seen|Reading a.txt"),
                                             QStringLiteral("claude:a|Done|-")}));
}

// ---- Idle life

TEST_F(AgentSessionStoreTest, AnIdlePetWandersThroughItsPhases)
{
    settings.idleSleepMinutes = 0;
    struct Row
    {
        int chance;
        double hold;
        P phase;
        Seconds stays;
    };
    // The pool is idle, coffee, relaxing, walking without the phase of the moment.
    const std::vector<Row> rows{
        {0, 0, P::coffee, 4s},         {2, 1, P::walking, 7s}, {0, 0, P::idle, 5s},
        {1, 0.5, P::relaxing, 5500ms}, {0, 1, P::idle, 9s},    {2, 0, P::walking, 4s},
    };
    for (const Row& row : rows) {
        random.integers.push_back(row.chance);
        random.fractions.push_back(row.hold);
    }
    time.advance(200ms);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(pet.state(), rows[i].phase) << i;
        time.advance(rows[i].stays - 100ms);
        EXPECT_EQ(pet.state(), rows[i].phase) << i;
        // Time is looked at every 0.2 s.
        time.advance(i + 1 < rows.size() && rows[i].stays == Seconds(5.5) ? Seconds(0.2) : Seconds(0.1));
    }
    EXPECT_EQ(pet.activeProvider(), std::nullopt);
    EXPECT_EQ(seen(), QString());
}

TEST_F(AgentSessionStoreTest, SleepComesAfterTheMinutesOfTheSettings)
{
    settings.idleSleepMinutes = 2;
    time.advance(60s);
    EXPECT_NE(pet.state(), P::drowsy);
    time.advance(400ms);
    EXPECT_EQ(pet.state(), P::drowsy) << "half-way the pet gets drowsy, whatever chance says";
    time.advance(29s);
    EXPECT_EQ(pet.state(), P::drowsy);
    time.advance(30s + 200ms);
    EXPECT_NE(pet.state(), P::sleeping);
    time.advance(800ms);
    EXPECT_EQ(pet.state(), P::sleeping);
    time.advance(12h);
    EXPECT_EQ(pet.state(), P::sleeping);

    apply({.type = T::agentStopped});
    EXPECT_EQ(pet.state(), P::idle) << "every event wakes it";
    time.advance(61s);
    EXPECT_EQ(pet.state(), P::drowsy);
}

TEST_F(AgentSessionStoreTest, DrowsinessGrowsAsSleepNears)
{
    settings.idleSleepMinutes = 2;
    time.advance(90s + 600ms);
    // 30 s into the second half: floor(3 * 0.5) + 1 copies of drowsy stand before the three other phases.
    for (const auto& [chance, phase] : {std::pair(1, P::drowsy), std::pair(2, P::idle)}) {
        random.integers = {chance};
        random.fractions = {0.0};
        time.advance(4200ms);
        EXPECT_EQ(pet.state(), phase);
    }
}

TEST_F(AgentSessionStoreTest, ZeroMinutesMeanNoSleepEver)
{
    settings.idleSleepMinutes = 0;
    for (int i = 0; i < 2000; ++i) {
        random.integers = {i % 5};
        time.advance(4s);
        ASSERT_NE(pet.state(), P::drowsy);
        ASSERT_NE(pet.state(), P::sleeping);
    }
}

TEST_F(AgentSessionStoreTest, APausedPetSleepsWheneverNobodyWorks)
{
    time.advance(1s);
    change([](Settings& edited) { edited.pauseNibbo = true; });
    time.advance(200ms);
    EXPECT_EQ(pet.state(), P::sleeping);
    apply({.type = T::approvalRequired, .command = "make"});
    EXPECT_EQ(pet.state(), P::sleeping);
    EXPECT_NE(card(), nullptr) << "a request is shown even now";
    apply({.type = T::agentStopped});
    time.advance(1h);
    EXPECT_EQ(pet.state(), P::sleeping);

    change([](Settings& edited) { edited.pauseNibbo = false; });
    time.advance(200ms);
    EXPECT_EQ(pet.state(), P::idle);
    time.advance(4s);
    EXPECT_EQ(pet.state(), P::idle);
}

TEST_F(AgentSessionStoreTest, TheEndOfThePauseShowsWhoeverWorks)
{
    change([](Settings& edited) { edited.pauseNibbo = true; });
    apply(tool("make"));
    change([](Settings& edited) { edited.pauseNibbo = false; });
    pet.showNotice(P::idle, QStringLiteral("Nibbo is back."));
    time.advance(200ms);
    EXPECT_EQ(pet.state(), P::running);
}

TEST_F(AgentSessionStoreTest, ANewSleepTimeCountsAtOnce)
{
    settings.idleSleepMinutes = 1;
    time.advance(61s);
    EXPECT_EQ(pet.state(), P::sleeping);
    change([](Settings& edited) { edited.idleSleepMinutes = 0; });
    time.advance(200ms);
    EXPECT_EQ(pet.state(), P::idle);
    time.advance(1h);
    change([](Settings& edited) { edited.idleSleepMinutes = std::numeric_limits<qint64>::max(); });
    time.advance(1h);
    EXPECT_NE(pet.state(), P::sleeping);
    change([](Settings& edited) { edited.idleSleepMinutes = 5; });
    time.advance(200ms);
    EXPECT_EQ(pet.state(), P::sleeping);
}

TEST_F(AgentSessionStoreTest, NothingTicksWhenNothingIsDue)
{
    // A sleeping pet waits for events alone; at work and in idle life one step is planned, not five a second.
    time.advance(20min);
    ASSERT_EQ(pet.state(), P::sleeping);
    EXPECT_EQ(time.waiting(), 0);

    int looked = 0;
    QObject::connect(&store, &AgentSessionStore::sessionsChanged, &store, [&looked] { ++looked; });
    apply({.type = T::inputRequired});
    EXPECT_EQ(time.waiting(), 1);
    time.advance(1799s);
    EXPECT_EQ(time.waiting(), 1);
    EXPECT_EQ(looked, 1);

    change([](Settings& edited) { edited.pauseNibbo = true; });
    time.advance(1h);
    EXPECT_EQ(time.waiting(), 0);
}

} // namespace
} // namespace nibbo
