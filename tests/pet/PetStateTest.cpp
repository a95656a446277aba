#include "pet/PetState.h"
#include "pet/PetAnimation.h"

#include <gtest/gtest.h>

#include <QSet>

namespace nibbo {
namespace {

TEST(PetState, EveryStateHasAllThatAViewNeeds)
{
    QSet<QString> names;
    for (const PetState state : allPetStates()) {
        SCOPED_TRACE(rawValue(state).toStdString());
        names.insert(rawValue(state));
        EXPECT_EQ(petState(rawValue(state)), state);
        EXPECT_FALSE(imageName(state).isEmpty());
        EXPECT_FALSE(frameAnimationName(state).isEmpty());
        EXPECT_GT(frameFPS(state), 0);
        EXPECT_EQ(activityIcon(state).has_value(), isToolPose(state));
        EXPECT_GT(PetAnimation::forState(state).duration, 0);
        const QString english = bubbleText(state, AppLanguage::en);
        const QString chinese = bubbleText(state, AppLanguage::zh);
        EXPECT_FALSE(english.isEmpty());
        EXPECT_EQ(english.endsWith(u'…'), chinese.endsWith(u'…'));
        EXPECT_EQ(english == chinese, state == PetState::sleeping || state == PetState::reactStartled);
    }
    EXPECT_EQ(names.size(), petStateCount);
}

TEST(PetState, UnknownNamesAreNoState)
{
    for (const char16_t* name : {u"", u"Idle", u"waitingapproval", u"running "})
        EXPECT_FALSE(petState(QString::fromUtf16(name)));
}

TEST(PetState, GroupsHoldTheRightStates)
{
    const auto members = [](bool (*isMember)(PetState)) {
        QStringList names;
        for (const PetState state : allPetStates()) {
            if (isMember(state))
                names.append(rawValue(state));
        }
        return names.join(u' ').toStdString();
    };
    EXPECT_EQ(members(isToolPose), "coding reading searching running browsing planning");
    EXPECT_EQ(members(isReaction), "reactStartled reactGrumpy reactShoo reactHappy reactShy");
    EXPECT_EQ(members(isPersistent), "waitingApproval waitingInput warning");
    EXPECT_EQ(members(isCalm), "idle coffee relaxing walking drowsy");
}

} // namespace
} // namespace nibbo
