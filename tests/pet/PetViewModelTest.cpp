#include "pet/PetViewModel.h"

#include "settings/Settings.h"
#include "support/ManualTime.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace nibbo {
namespace {

using namespace std::chrono_literals;
using test::ManualTime;
using test::ScriptedRandom;

PetBubbleKind words(const char* text)
{
    return MessageBubble{QString::fromUtf8(text)};
}

PetBubbleKind card(const QUuid& eventId, int othersWaiting = 0)
{
    ApprovalBubble bubble;
    bubble.prompt.eventId = eventId;
    bubble.prompt.command = QStringLiteral("make");
    bubble.othersWaiting = othersWaiting;
    return bubble;
}

class PetViewModelTest : public testing::Test
{
protected:
    PetViewModelTest()
    {
        settings.language = AppLanguage::en;
        QObject::connect(&pet, &PetViewModel::approvalSubmitted, &pet, [this](const QUuid& id, bool allow) {
            verdicts.emplace_back(id, allow);
            order.append(QStringLiteral("verdict"));
        });
        QObject::connect(&pet, &PetViewModel::allowAllRequested, &pet,
                         [this] { order.append(QStringLiteral("allowAll")); });
    }

    /// What the bubble says; empty when none is to be seen.
    QString seen() const
    {
        return pet.bubbleVisible() && pet.bubble() ? plainText(*pet.bubble()) : QString();
    }
    void showCard() { pet.render(PetState::waitingApproval, card(request), true, claude); }

    const AgentProvider claude{QStringLiteral("claude")};
    const QUuid request = QUuid::createUuid();
    Settings settings;
    ManualTime time;
    ScriptedRandom random;
    PetViewModel pet{time, time, random, [this]() -> const Settings& { return settings; }};
    std::vector<std::pair<QUuid, bool>> verdicts;
    QStringList order;
};

// ---- Bubbles

TEST_F(PetViewModelTest, ABubbleGoesAfterThreeSecondsUnlessItStands)
{
    pet.showBubble(words("one"), false);
    time.advance(2900ms);
    pet.showBubble(words("two"), false);
    time.advance(2900ms);
    EXPECT_EQ(seen(), QStringLiteral("two"));
    time.advance(100ms);
    EXPECT_EQ(seen(), QString());

    pet.showBubble(words("three"), false);
    pet.showBubble(words("stands"), true);
    time.advance(1h);
    EXPECT_EQ(seen(), QStringLiteral("stands"));
    EXPECT_EQ(time.waiting(), 0);
}

TEST_F(PetViewModelTest, ARenderWithoutABubbleHidesTheOldOne)
{
    pet.render(PetState::waitingInput, words("answer me"), true, claude);
    EXPECT_TRUE(pet.isPersistentState());
    pet.render(PetState::idle, std::nullopt, false, std::nullopt);
    EXPECT_EQ(seen(), QString());
    EXPECT_EQ(pet.activeProvider(), std::nullopt);
}

TEST_F(PetViewModelTest, ToggleHidesAndShowsAgain)
{
    pet.toggleBubble();
    EXPECT_EQ(seen(), QStringLiteral("Idle"));
    pet.toggleBubble();
    EXPECT_EQ(seen(), QString());

    pet.render(PetState::coding, std::nullopt, false, claude);
    EXPECT_EQ(pet.neutralStatusText(), QStringLiteral("Claude: Working…"));
    pet.render(PetState::waitingInput, words("answer me"), true, claude);
    pet.toggleBubble();
    pet.toggleBubble();
    time.advance(10s);
    EXPECT_EQ(seen(), QStringLiteral("answer me"));
}

TEST_F(PetViewModelTest, EqualRendersAnnounceNothingTwice)
{
    int announced = 0;
    QObject::connect(&pet, &PetViewModel::bubbleChanged, &pet, [&announced] { ++announced; });
    for (int i = 0; i < 5; ++i) {
        pet.render(PetState::coding, words("Running make"), false, claude);
        time.advance(2s);
    }
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(seen(), QStringLiteral("Running make"));
}

TEST_F(PetViewModelTest, ANoticeOutlivesARenderThatSaysNothing)
{
    pet.showNotice(PetState::sleeping, QStringLiteral("Paused."));
    pet.render(PetState::sleeping, std::nullopt, false, std::nullopt);
    EXPECT_EQ(seen(), QStringLiteral("Paused."));
    time.advance(3s);
    EXPECT_EQ(seen(), QString());

    showCard();
    pet.showNotice(PetState::sleeping, QStringLiteral("Paused."));
    time.advance(3s);
    EXPECT_TRUE(pet.bubble() == card(request)) << "a notice must not cost the card that it spoke over";
}

// ---- Reactions

TEST_F(PetViewModelTest, ReactionsFitWhatThePetDoes)
{
    struct Row
    {
        std::vector<PetState> bases;
        PetState first;
        PetState last;
    };
    using P = PetState;
    const std::vector<Row> rows{
        {{P::idle, P::responding, P::coffee, P::relaxing, P::walking}, P::reactHappy, P::reactShy},
        {{P::thinking, P::compactingContext}, P::reactShoo, P::reactStartled},
        {{P::coding, P::reading, P::searching, P::running, P::browsing, P::planning},
         P::reactShoo,
         P::reactGrumpy},
        {{P::waitingApproval, P::waitingInput, P::warning}, P::reactGrumpy, P::reactStartled},
        {{P::sleeping, P::drowsy}, P::reactStartled, P::reactGrumpy},
        {{P::success}, P::reactHappy, P::reactHappy},
    };
    for (const Row& row : rows) {
        for (const PetState base : row.bases) {
            for (const auto& [chance, expected] : {std::pair(0, row.first), std::pair(1, row.last)}) {
                SCOPED_TRACE(rawValue(base).toStdString());
                pet.setState(base);
                random.integers = {chance, 0};
                pet.petReaction();
                EXPECT_EQ(pet.state(), expected);
                EXPECT_TRUE(pet.reactionActive());
                time.advance(1499ms);
                EXPECT_EQ(pet.state(), expected);
                time.advance(1ms);
                EXPECT_EQ(pet.state(), base);
                EXPECT_FALSE(pet.reactionActive());
                EXPECT_EQ(seen(), QString());
                time.advance(10s);
            }
        }
    }
}

TEST_F(PetViewModelTest, PettingInQuickSuccessionMakesItHappier)
{
    // The dice would say shy every time; from the third on happiness wins.
    const std::vector<std::pair<PetState, QString>> expected{
        {PetState::reactShy, QStringLiteral("Oh my…")},
        {PetState::reactShy, QStringLiteral("Oh my…")},
        {PetState::reactHappy, QStringLiteral("More pets~")},
        {PetState::reactHappy, QStringLiteral("More pets~")},
        {PetState::reactHappy, QStringLiteral("I love you most! ❤")},
        {PetState::reactHappy, QStringLiteral("I love you most! ❤")},
    };
    for (const auto& [reaction, line] : expected) {
        random.integers.clear();
        if (reaction == PetState::reactShy)
            random.integers.push_back(1);
        random.integers.push_back(0);
        pet.petReaction();
        EXPECT_EQ(pet.state(), reaction);
        EXPECT_EQ(seen(), line);
        time.advance(2400ms);
    }
    time.advance(100ms);
    random.integers = {1, 0};
    pet.petReaction();
    EXPECT_EQ(pet.state(), PetState::reactShy) << "2.5 s of rest end the streak";
}

TEST_F(PetViewModelTest, LinesFollowTheLanguage)
{
    settings.language = AppLanguage::zh;
    pet.petReaction();
    EXPECT_EQ(seen(), QStringLiteral("嘿嘿～"));
    EXPECT_EQ(pet.pick({QStringLiteral("only English")}, {}),
              bubbleText(PetState::reactHappy, AppLanguage::zh));
}

TEST_F(PetViewModelTest, AReactionParksWhatCanWait)
{
    pet.petReaction();
    pet.render(PetState::thinking, words("old"), false, claude);
    pet.render(PetState::coding, words("new"), false, claude);
    EXPECT_TRUE(isReaction(pet.state()));
    EXPECT_EQ(pet.activeProvider(), std::nullopt);
    time.advance(1500ms);
    EXPECT_EQ(pet.state(), PetState::coding);
    EXPECT_EQ(seen(), QStringLiteral("new"));
    EXPECT_EQ(pet.activeProvider(), claude);
}

TEST_F(PetViewModelTest, WhatNeedsTheUserCutsAReactionShort)
{
    pet.petReaction();
    pet.render(PetState::thinking, words("parked"), false, claude);
    showCard();
    EXPECT_EQ(pet.state(), PetState::waitingApproval);
    EXPECT_TRUE(pet.bubble() == card(request));
    time.advance(1min);
    pet.beginDragging();
    pet.endDragging();
    EXPECT_EQ(pet.state(), PetState::waitingApproval) << "the parked render is older than the card";
    EXPECT_TRUE(pet.bubbleVisible() && pet.bubble() == card(request));
}

TEST_F(PetViewModelTest, ACardComesBackAfterTheReactionOrDragThatSpokeOverIt)
{
    showCard();
    pet.petReaction();
    EXPECT_FALSE(pet.bubble() == card(request));
    pet.petReaction();
    pet.beginDragging();
    time.advance(10s);
    pet.endDragging();
    EXPECT_EQ(pet.state(), PetState::waitingApproval);
    EXPECT_TRUE(pet.bubble() == card(request));
    time.advance(10s);
    pet.submitApproval(false);
    EXPECT_EQ(verdicts, (std::vector{std::pair(request, false)}));
}

TEST_F(PetViewModelTest, HoveringTurnsACalmPetShyAtMostEveryFiveSeconds)
{
    pet.hover();
    EXPECT_EQ(pet.state(), PetState::reactShy);
    EXPECT_EQ(seen(), QString());
    time.advance(600ms);
    EXPECT_EQ(pet.state(), PetState::idle);
    time.advance(4300ms);
    pet.hover();
    EXPECT_EQ(pet.state(), PetState::idle);
    time.advance(100ms);
    pet.hover();
    EXPECT_EQ(pet.state(), PetState::reactShy);

    time.advance(1min);
    for (const PetState busy : {PetState::coding, PetState::waitingApproval, PetState::sleeping}) {
        pet.setState(busy);
        pet.hover();
        EXPECT_EQ(pet.state(), busy);
    }
}

// ---- Drags

TEST_F(PetViewModelTest, ADragHoldsEveryRenderBack)
{
    for (const bool persistent : {false, true}) {
        pet.setState(PetState::idle);
        pet.beginDragging();
        EXPECT_EQ(seen(), QStringLiteral("Yikes!"));
        pet.render(PetState::waitingInput, words("news"), persistent, claude);
        EXPECT_EQ(pet.state(), PetState::dragging);
        EXPECT_EQ(seen(), QStringLiteral("Yikes!"));
        pet.endDragging();
        EXPECT_EQ(pet.state(), PetState::waitingInput);
        EXPECT_EQ(seen(), QStringLiteral("news"));
        time.advance(3s);
        EXPECT_EQ(pet.bubbleVisible(), persistent);
    }
}

TEST_F(PetViewModelTest, WhatTheMenuShowsHoldsNothingUp)
{
    showCard();
    pet.setState(PetState::sleeping);
    pet.speak(QStringLiteral("Zzz"));
    EXPECT_EQ(seen(), QStringLiteral("Zzz"));
    time.advance(3s);
    EXPECT_TRUE(std::holds_alternative<ApprovalBubble>(*pet.bubble()) && pet.bubbleVisible())
        << "the request still waits";

    pet.setState(PetState::dragging);
    pet.render(PetState::thinking, words("back"), false, claude);
    EXPECT_EQ(pet.state(), PetState::thinking) << "only a drag by the pointer holds a render back";
}

TEST_F(PetViewModelTest, AfterADragThePetGoesOnAsBefore)
{
    pet.setState(PetState::coffee);
    pet.petReaction();
    pet.beginDragging();
    pet.beginDragging();
    EXPECT_FALSE(pet.reactionActive());
    pet.endDragging();
    EXPECT_EQ(pet.state(), PetState::coffee);
    EXPECT_EQ(seen(), QString()) << "the words of the drag end with it";
    time.advance(10s);
    EXPECT_EQ(pet.state(), PetState::coffee);
    pet.endDragging();
    EXPECT_EQ(pet.state(), PetState::coffee);
}

TEST_F(PetViewModelTest, PettedInMidAirItStillComesDown)
{
    for (const bool reactionEndsFirst : {true, false}) {
        pet.setState(PetState::relaxing);
        pet.beginDragging();
        pet.petReaction();
        EXPECT_EQ(pet.state(), PetState::reactHappy);
        if (reactionEndsFirst) {
            time.advance(1500ms);
            EXPECT_EQ(pet.state(), PetState::dragging);
            pet.endDragging();
        } else {
            pet.endDragging();
            time.advance(1500ms);
        }
        EXPECT_EQ(pet.state(), PetState::relaxing);
        time.advance(10s);
    }
}

// ---- Pause

TEST_F(PetViewModelTest, APausedPetSleepsOrIsDraggedAndNothingElse)
{
    settings.pauseNibbo = true;
    pet.showNotice(PetState::sleeping, QStringLiteral("Paused."));
    pet.render(PetState::thinking, words("hm"), false, claude);
    EXPECT_EQ(pet.state(), PetState::sleeping);
    EXPECT_FALSE(pet.setState(PetState::coffee));
    pet.beginDragging();
    EXPECT_EQ(pet.state(), PetState::dragging);
    pet.endDragging();
    EXPECT_EQ(pet.state(), PetState::sleeping);
}

TEST_F(PetViewModelTest, APauseDuringAReactionOrDragIsKeptAfterwards)
{
    pet.setState(PetState::walking);
    pet.petReaction();
    settings.pauseNibbo = true;
    time.advance(1500ms);
    EXPECT_EQ(pet.state(), PetState::sleeping);

    settings.pauseNibbo = false;
    pet.setState(PetState::walking);
    pet.beginDragging();
    settings.pauseNibbo = true;
    pet.showNotice(PetState::sleeping, QStringLiteral("Paused."));
    EXPECT_EQ(pet.state(), PetState::dragging);
    pet.endDragging();
    EXPECT_EQ(pet.state(), PetState::sleeping);
}

// ---- Bumps and verdicts

TEST_F(PetViewModelTest, ABumpIsClearedByItsOwnResetOnly)
{
    pet.bump(BumpDirection::left);
    time.advance(200ms);
    pet.bump(BumpDirection::top);
    time.advance(200ms);
    EXPECT_EQ(pet.bumpDirection(), BumpDirection::top);
    EXPECT_EQ(pet.bumpTrigger(), 2);
    time.advance(200ms);
    EXPECT_EQ(pet.bumpDirection(), std::nullopt);
}

TEST_F(PetViewModelTest, ACardIsAnsweredOnce)
{
    showCard();
    pet.submitApproval(true);
    pet.submitApproval(false);
    pet.allowAll();
    EXPECT_EQ(verdicts, (std::vector{std::pair(request, true)}));
    EXPECT_EQ(order, QStringList{QStringLiteral("verdict")});
    EXPECT_EQ(seen(), QString());
    pet.toggleBubble();
    EXPECT_FALSE(std::holds_alternative<ApprovalBubble>(*pet.bubble())) << "an answered card must not return";
}

TEST_F(PetViewModelTest, AllowAllGrantsTheCardAndThenAsksForTheMode)
{
    showCard();
    pet.allowAll();
    EXPECT_EQ(verdicts, (std::vector{std::pair(request, true)}));
    EXPECT_EQ(order, (QStringList{QStringLiteral("verdict"), QStringLiteral("allowAll")}));
}

TEST_F(PetViewModelTest, TheNextCardThatAnAnswerBringsStays)
{
    const QUuid next = QUuid::createUuid();
    QObject::connect(&pet, &PetViewModel::approvalSubmitted, &pet, [this, next](const QUuid& id) {
        if (id == request)
            pet.render(PetState::waitingApproval, card(next), true, claude);
    });
    showCard();
    pet.submitApproval(true);
    EXPECT_TRUE(pet.bubbleVisible());
    pet.submitApproval(false);
    EXPECT_EQ(verdicts, (std::vector{std::pair(request, true), std::pair(next, false)}));
}

TEST_F(PetViewModelTest, ACardThatWasTakenAwayOrIsHiddenAnswersNobody)
{
    showCard();
    pet.render(PetState::coding, words("Running make"), false, claude);
    pet.submitApproval(true);
    showCard();
    pet.render(PetState::coding, std::nullopt, false, claude);
    pet.submitApproval(true);
    showCard();
    pet.toggleBubble();
    pet.submitApproval(true);
    EXPECT_TRUE(verdicts.empty());
}

TEST_F(PetViewModelTest, AHiddenCardReturnsByAClickForAsLongAsItWaits)
{
    settings.pauseNibbo = true;
    showCard();
    pet.toggleBubble();
    pet.toggleBubble();
    time.advance(1h);
    pet.submitApproval(true);
    EXPECT_EQ(verdicts, (std::vector{std::pair(request, true)}));
}

TEST(PetBubbleKind, PlainTextIsOneLine)
{
    const AgentProvider claude(QStringLiteral("claude"));
    EXPECT_EQ(
        plainText(NarrationBubble{claude, QStringLiteral("Reading a.txt"), QStringLiteral("Let me\nlook")}),
        QStringLiteral("Reading a.txt - Let me look"));
    ApprovalBubble approval;
    approval.prompt.title = QStringLiteral("Claude wants to continue");
    approval.prompt.command = QStringLiteral("a\nb");
    EXPECT_EQ(plainText(approval), QStringLiteral("Claude wants to continue: a b"));
}

} // namespace
} // namespace nibbo
