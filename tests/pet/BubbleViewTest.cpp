#include "BubbleSamples.h"

#include "pet/PetViewModel.h"
#include "pet/view/BubblePresenter.h"
#include "settings/SettingsStore.h"
#include "support/ManualTime.h"

#include <QFontMetricsF>
#include <QImage>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace nibbo {
namespace {

using namespace test;
using namespace std::chrono_literals;

class BubbleViewTest : public ::testing::Test
{
protected:
    void show(const BubbleContent& content)
    {
        view.present(content);
        giveSize(view);
        time.advance(1s);
    }
    BubbleLook look(BubbleStyle style, AppLanguage language)
    {
        BubbleLook wanted;
        wanted.style = style;
        wanted.language = language;
        return wanted;
    }

    ManualTime time;
    BubbleView view{time, time};
};

TEST_F(BubbleViewTest, comesAndGoesSoftlyAndTicksOnlyMeanwhile)
{
    QSignalSpy sizes(&view, &BubblePane::preferredSizeChanged);
    EXPECT_TRUE(view.preferredSize().isEmpty());
    EXPECT_FALSE(view.isVisible());
    EXPECT_EQ(time.waiting(), 0);

    view.present(narration(QStringLiteral("Hello")));
    giveSize(view);
    EXPECT_EQ(sizes.size(), 1);
    EXPECT_EQ(time.waiting(), 1);
    const QImage faint = view.grab().toImage();
    time.advance(1s);
    EXPECT_EQ(time.waiting(), 0);
    const QImage full = view.grab().toImage();
    EXPECT_NE(faint, full);

    view.dismiss();
    EXPECT_EQ(time.waiting(), 1);
    time.advance(0.05s);
    EXPECT_FALSE(view.preferredSize().isEmpty()) << "it keeps its place while it fades";
    EXPECT_NE(view.grab().toImage(), full);
    time.advance(1s);
    EXPECT_TRUE(view.preferredSize().isEmpty());
    EXPECT_EQ(sizes.size(), 2);
    EXPECT_EQ(time.waiting(), 0);
    EXPECT_FALSE(view.isVisible());
}

TEST_F(BubbleViewTest, aBubbleThatComesBackWhileItLeavesStays)
{
    show(narration(QStringLiteral("One")));
    view.dismiss();
    time.advance(0.05s);
    view.present(narration(QStringLiteral("Two")));
    time.advance(1s);
    EXPECT_FALSE(view.preferredSize().isEmpty());
    EXPECT_EQ(view.drawnLines(), QStringList{QStringLiteral("Two")});
    EXPECT_EQ(time.waiting(), 0);
}

TEST_F(BubbleViewTest, reducedMotionAndNoCompositorShowAtOnce)
{
    for (const bool reduced : {true, false}) {
        BubbleLook still;
        still.reducedMotion = reduced;
        still.composited = reduced;
        view.setLook(still);
        view.present(narration(QStringLiteral("Hello")));
        EXPECT_EQ(time.waiting(), 0);
        view.dismiss();
        EXPECT_TRUE(view.preferredSize().isEmpty());
        EXPECT_EQ(time.waiting(), 0);
    }
}

TEST_F(BubbleViewTest, onlyTheCardTakesClicks)
{
    show(narration(QStringLiteral("Hello")));
    EXPECT_TRUE(view.clickRegion().isEmpty());
    QSignalSpy regions(&view, &BubblePane::clickRegionChanged);
    show(contentOf(requestFor(QStringLiteral("make"))));
    EXPECT_GT(regions.size(), 0);
    EXPECT_TRUE(view.clickRegion().contains(view.card().geometry().center()));
    EXPECT_FALSE(view.clickRegion().contains(QPoint(1, 1)));
    regions.clear();
    view.dismiss();
    EXPECT_TRUE(view.clickRegion().isEmpty()) << "a fading card takes no clicks";
    EXPECT_GT(regions.size(), 0);
}

TEST_F(BubbleViewTest, wordsStayPlainTextAndLoseWhatDisturbs)
{
    struct Case
    {
        const char16_t* words;
        const char16_t* drawn;
    };
    const Case cases[] = {
        {u"<b>x</b> &amp; **y**", u"<b>x</b> &amp; **y**"},
        {u"  a \t  b  ", u"a b"},
        {u"a\n\n\n\nb", u"a|b"},
        {u"a\r\nb", u"a|b"},
        {u"evil\u202Etxt\u0007\x1b[31m", u"eviltxt[31m"},
        {u"👩\u200D👩\u200D👧 ok", u"👩\u200D👩\u200D👧 ok"},
    };
    for (const Case& entry : cases) {
        show(narration(QString::fromUtf16(entry.words)));
        EXPECT_EQ(view.drawnLines().join(u'|'), QString::fromUtf16(entry.drawn));
    }
}

TEST_F(BubbleViewTest, longWordsEndInDotsBetweenGraphemes)
{
    const QString parts[] = {QStringLiteral("👨‍👩‍👧‍👦"),
                             QStringLiteral("e\u0301"),
                             QStringLiteral("你"),
                             QStringLiteral("x"),
                             QStringLiteral("🏳️‍🌈"),
                             QStringLiteral("שלום ")};
    for (const BubbleStyle style : allStyles) {
        view.setLook(look(style, AppLanguage::en));
        const int limit = BubbleMetrics::of(style, view.font()).textLines;
        for (const QString& part : parts) {
            show(narration(part.repeated(400)));
            const QStringList lines = view.drawnLines();
            ASSERT_EQ(lines.size(), limit);
            QString last = lines.last();
            ASSERT_TRUE(last.endsWith(u'…')) << qUtf8Printable(last);
            last.chop(1);
            EXPECT_GT(last.size(), 0);
            QString whole = part.repeated(static_cast<int>(last.size()));
            EXPECT_TRUE(whole.startsWith(last));
            if (!part.endsWith(u' ')) {
                EXPECT_EQ(last.size() % part.size(), 0) << qUtf8Printable(last);
            }
            for (const QString& line : lines)
                EXPECT_LE(QFontMetricsF(BubbleMetrics::of(style, view.font()).font).horizontalAdvance(line),
                          view.preferredSize().width());
        }
    }
}

TEST_F(BubbleViewTest, everyShortTextIsWholeInEverySizeAndLanguage)
{
    for (const BubbleStyle style : allStyles) {
        for (const AppLanguage language : bothLanguages) {
            view.setLook(look(style, language));
            for (const PetState state : allPetStates()) {
                const QString words = bubbleText(state, language);
                show({MessageBubble{words}, state, std::nullopt});
                EXPECT_EQ(
                    view.drawnLines().join(language == AppLanguage::zh ? QString() : QStringLiteral(" ")),
                    words);
            }
        }
    }
}

TEST_F(BubbleViewTest, settingsTurnChipAndActivityOnAndOff)
{
    const BubbleContent content = narration(QStringLiteral("Two words"), QStringLiteral("Reading a.txt"));
    BubbleLook with;
    with.showProviderChip = true;
    BubbleLook without;
    without.showActivityLabel = false;
    view.setLook(with);
    show(content);
    const int tall = view.preferredSize().height();
    with.showProviderChip = false;
    view.setLook(with);
    const int middle = view.preferredSize().height();
    view.setLook(without);
    const int low = view.preferredSize().height();
    EXPECT_GT(tall, middle);
    EXPECT_GT(middle, low);
}

TEST_F(BubbleViewTest, theTailStaysOnTheBubbleOnBothSides)
{
    show(narration(QStringLiteral("Some words for a bubble")));
    const QSize above = view.size();
    for (const TailSide side : {TailSide::bottom, TailSide::top}) {
        for (const int tip : {-50, 0, above.width() / 2, above.width() + 50}) {
            view.setTail(side, tip);
            EXPECT_EQ(view.preferredSize(), above);
            BubbleFrame frame;
            frame.shape(above, side, tip, 12);
            EXPECT_GT(frame.tip().x(), frame.body().left());
            EXPECT_LT(frame.tip().x(), frame.body().right());
            EXPECT_EQ(frame.tip().y() > frame.body().bottom(), side == TailSide::bottom);
            EXPECT_TRUE(QRectF(QPointF(), QSizeF(above)).contains(frame.outline().boundingRect()));
        }
    }
}

TEST_F(BubbleViewTest, bothThemesAreReadable)
{
    const auto luminance = [](const QColor& colour) {
        const auto part = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
    };
    const auto contrast = [&](const QColor& a, const QColor& b) {
        const double one = luminance(a) + 0.05;
        const double other = luminance(b) + 0.05;
        return std::max(one, other) / std::min(one, other);
    };
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        const BubbleColours& colours = BubbleColours::of(scheme);
        EXPECT_GE(contrast(colours.text, colours.surface), 7.0);
        EXPECT_GE(contrast(colours.text, colours.inset), 7.0);
        EXPECT_GE(contrast(colours.quietText, colours.surface), 4.5);
        EXPECT_GE(contrast(colours.quietText, colours.inset), 4.5);
        EXPECT_GE(contrast(colours.accentText, colours.inset), 4.5);
        EXPECT_GE(contrast(colours.onAccent, colours.accent), 4.5);
        EXPECT_GE(contrast(colours.danger, colours.surface), 4.5);
        EXPECT_GE(contrast(colours.caution, colours.cautionFill), 4.5);
    }
}

class BubblePresenterTest : public ::testing::Test
{
protected:
    BubblePresenterTest()
        : settings(defaults)
        , model(time, time, random, [this]() -> const Settings& { return settings.current(); })
        , presenter(view, model, settings)
    {
        settings.change([](Settings& edit) { edit.language = AppLanguage::en; });
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.json"))};
    ManualTime time;
    ScriptedRandom random;
    BubbleView view{time, time};
    SettingsStore settings;
    PetViewModel model;
    BubblePresenter presenter;
};

TEST_F(BubblePresenterTest, showsWhatTheModelShows)
{
    EXPECT_FALSE(view.isPresent());
    model.showBubble(MessageBubble{QStringLiteral("Hello")}, false);
    EXPECT_TRUE(view.isPresent());
    EXPECT_EQ(view.drawnLines(), QStringList{QStringLiteral("Hello")});
    time.advance(10s);
    EXPECT_FALSE(view.isPresent());
    EXPECT_TRUE(view.preferredSize().isEmpty());
}

TEST_F(BubblePresenterTest, followsSettingsAndTheDesktopsColours)
{
    settings.change([](Settings& edit) {
        edit.bubbleStyle = BubbleStyle::large;
        edit.language = AppLanguage::zh;
        edit.showActivityLabel = false;
        edit.showProviderChip = true;
    });
    EXPECT_EQ(view.look().style, BubbleStyle::large);
    EXPECT_EQ(view.look().language, AppLanguage::zh);
    EXPECT_FALSE(view.look().showActivityLabel);
    EXPECT_TRUE(view.look().showProviderChip);

    QPalette dark;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    view.setPalette(dark);
    EXPECT_EQ(view.look().scheme, ColourScheme::dark);
    presenter.setDesktopScheme(ColourScheme::light);
    EXPECT_EQ(view.look().scheme, ColourScheme::light) << "the desktop's word wins over the palette";
    presenter.setDesktopScheme(std::nullopt);
    EXPECT_EQ(view.look().scheme, ColourScheme::dark);
    presenter.setComposited(false);
    EXPECT_FALSE(view.look().composited);
    presenter.setReducedMotion(true);
    EXPECT_TRUE(view.look().reducedMotion);
}

TEST_F(BubblePresenterTest, handsAnswersToTheModel)
{
    QSignalSpy verdicts(&model, &PetViewModel::approvalSubmitted);
    QSignalSpy allowAll(&model, &PetViewModel::allowAllRequested);
    for (const CardButton button : {CardButton::deny, CardButton::allow, CardButton::allowAll}) {
        verdicts.clear();
        const ApprovalBubble request = requestFor(QStringLiteral("make"));
        model.showBubble(request, true);
        Q_EMIT view.answered(request.prompt.eventId, button);
        ASSERT_EQ(verdicts.size(), 1);
        EXPECT_EQ(verdicts[0][0].toUuid(), request.prompt.eventId);
        EXPECT_EQ(verdicts[0][1].toBool(), button != CardButton::deny);
        EXPECT_FALSE(model.bubbleVisible());
        Q_EMIT view.answered(request.prompt.eventId, button);
        EXPECT_EQ(verdicts.size(), 1) << "given once";
    }
    EXPECT_EQ(allowAll.size(), 1);
}

TEST_F(BubblePresenterTest, anAnswerToAnotherRequestGoesNowhere)
{
    QSignalSpy verdicts(&model, &PetViewModel::approvalSubmitted);
    const ApprovalBubble first = requestFor(QStringLiteral("make"));
    model.showBubble(first, true);
    model.showBubble(requestFor(QStringLiteral("rm -rf /")), true);
    Q_EMIT view.answered(first.prompt.eventId, CardButton::allow);
    model.showBubble(MessageBubble{QStringLiteral("Hello")}, true);
    Q_EMIT view.answered(first.prompt.eventId, CardButton::allow);
    EXPECT_EQ(verdicts.size(), 0);
}

} // namespace
} // namespace nibbo
