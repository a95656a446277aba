#include "BubbleSamples.h"

#include "pet/view/CommandRows.h"
#include "support/ManualTime.h"

#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace nibbo {
namespace {

using namespace test;
using namespace std::chrono_literals;

constexpr CardButton allButtons[] = {CardButton::deny, CardButton::allow, CardButton::allowAll};

struct Answer
{
    QUuid eventId;
    CardButton button;

    bool operator==(const Answer&) const = default;
};

class ApprovalCardTest : public ::testing::Test
{
protected:
    ApprovalCardTest()
        : card(*view.findChild<ApprovalCard*>())
    {
        BubbleLook look;
        look.reducedMotion = true;
        view.setLook(look);
        QObject::connect(&view, &BubbleView::answered, &view,
                         [this](const QUuid& eventId, CardButton button) {
                             answers.push_back({eventId, button});
                         });
    }

    ApprovalBubble show(const QString& command)
    {
        const ApprovalBubble request = requestFor(command);
        present(request);
        return request;
    }
    void present(const ApprovalBubble& request)
    {
        view.present(contentOf(request));
        giveSize(view);
    }
    QPointF middle(CardButton button) const { return QRectF(card.buttonRect(button)).center(); }
    void click(CardButton button)
    {
        press(card, middle(button));
        release(card, middle(button));
    }

    ManualTime time;
    BubbleView view{time, time};
    ApprovalCard& card;
    std::vector<Answer> answers;
};

TEST_F(ApprovalCardTest, everyButtonAnswersOnceItIsLive)
{
    for (const CardButton button : allButtons) {
        answers.clear();
        time.advance(10s);
        const ApprovalBubble request = show(QStringLiteral("make"));
        time.advance(0.8s);
        click(button);
        ASSERT_EQ(answers.size(), 1U);
        EXPECT_EQ(answers[0], (Answer{request.prompt.eventId, button}));
    }
}

TEST_F(ApprovalCardTest, allowIsDeadAtFirstAndDenyIsNot)
{
    show(QStringLiteral("make"));
    click(CardButton::allow);
    click(CardButton::allowAll);
    time.advance(0.79s);
    click(CardButton::allow);
    EXPECT_TRUE(answers.empty());
    click(CardButton::deny);
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(ApprovalCardTest, wakesWithOneTimerAndRestsWithNone)
{
    show(QStringLiteral("make"));
    EXPECT_EQ(time.waiting(), 1);
    time.advance(0.8s);
    EXPECT_EQ(time.waiting(), 0);
    EXPECT_TRUE(card.isLive(CardButton::allow));
    view.dismiss();
    time.advance(1s);
    show(manyLines(60));
    EXPECT_EQ(time.waiting(), 0) << "only scrolling can wake it";
}

TEST_F(ApprovalCardTest, aChangedCardStartsAnewAndTheSameOneDoesNot)
{
    ApprovalBubble request = show(QStringLiteral("make"));
    time.advance(0.8s);
    ASSERT_TRUE(card.isLive(CardButton::allow));
    request.prompt.id = QUuid::createUuid();
    request.othersWaiting = 3;
    const QRect before = card.buttonRect(CardButton::allow);
    present(request);
    EXPECT_TRUE(card.isLive(CardButton::allow)) << "the same request, with more of them waiting behind it";
    EXPECT_EQ(card.buttonRect(CardButton::allow), before);

    using Edit = void (*)(ApprovalBubble&);
    const Edit edits[] = {
        [](ApprovalBubble& changed) { changed.prompt.eventId = QUuid::createUuid(); },
        [](ApprovalBubble& changed) { changed.prompt.command += u'!'; },
        [](ApprovalBubble& changed) { changed.prompt.title += u'!'; },
        [](ApprovalBubble& changed) { changed.prompt.message = QStringLiteral("why"); },
        [](ApprovalBubble& changed) { changed.prompt.risk = ApprovalRisk::risky; },
        [](ApprovalBubble& changed) { changed.folder = QStringLiteral("/tmp"); },
    };
    for (const Edit edit : edits) {
        time.advance(1s);
        ASSERT_TRUE(card.isLive(CardButton::allow));
        press(card, middle(CardButton::allow));
        edit(request);
        present(request);
        EXPECT_FALSE(card.isLive(CardButton::allow));
        time.advance(1s);
        release(card, middle(CardButton::allow));
        EXPECT_TRUE(answers.empty()) << "a press does not survive the change";
    }
}

TEST_F(ApprovalCardTest, movedOrResizedButtonsSettleAgain)
{
    show(QStringLiteral("make"));
    time.advance(1s);
    view.move(view.pos() + QPoint(30, 0));
    EXPECT_FALSE(card.isLive(CardButton::allow));
    EXPECT_TRUE(card.isLive(CardButton::deny));
    time.advance(1s);
    view.resize(view.size() + QSize(0, 12));
    EXPECT_FALSE(card.isLive(CardButton::allow));
    time.advance(1s);
    BubbleLook large = view.look();
    large.style = BubbleStyle::large;
    view.setLook(large);
    EXPECT_FALSE(card.isLive(CardButton::allow));
}

TEST_F(ApprovalCardTest, pressAndReleaseMustMeetOnOneButton)
{
    show(QStringLiteral("make"));
    time.advance(1s);
    const QPointF beside = QRectF(card.commandRect()).center();
    const std::pair<QPointF, QPointF> slips[] = {
        {middle(CardButton::allow), middle(CardButton::deny)},
        {middle(CardButton::deny), middle(CardButton::allow)},
        {middle(CardButton::allow), beside},
        {beside, middle(CardButton::allow)},
        {middle(CardButton::allow), QPointF(-40, -40)},
    };
    for (const auto& [from, to] : slips) {
        press(card, from);
        release(card, to);
    }
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        press(card, middle(CardButton::allow), button);
        release(card, middle(CardButton::allow), button);
    }
    EXPECT_TRUE(answers.empty());
}

TEST_F(ApprovalCardTest, aDoubleClickAnswersOneRequestOnly)
{
    const ApprovalBubble first = show(QStringLiteral("make"));
    const ApprovalBubble second = requestFor(QStringLiteral("rm -rf /"));
    QObject::connect(&view, &BubbleView::answered, &view, [&] {
        if (answers.size() == 1)
            present(second);
    });
    time.advance(1s);
    press(card, middle(CardButton::deny));
    release(card, middle(CardButton::deny));
    time.advance(0.2s);
    sendMouse(card, QEvent::MouseButtonDblClick, middle(CardButton::deny));
    release(card, middle(CardButton::deny));
    EXPECT_EQ(answers, (std::vector<Answer>{{first.prompt.eventId, CardButton::deny}}));
    time.advance(0.5s);
    // The first click on a button that was dead does not spoil the second.
    sendMouse(card, QEvent::MouseButtonDblClick, middle(CardButton::deny));
    release(card, middle(CardButton::deny));
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[1].eventId, second.prompt.eventId);
}

TEST_F(ApprovalCardTest, allowWaitsForTheEndOfALongCommand)
{
    show(manyLines(40));
    time.advance(10s);
    EXPECT_GT(card.hiddenRows(), 0);
    click(CardButton::allow);
    click(CardButton::allowAll);
    EXPECT_TRUE(answers.empty());
    int turns = 0;
    while (card.hiddenRows() > 0 && turns < 100) {
        EXPECT_FALSE(card.isLive(CardButton::allow));
        EXPECT_TRUE(turnWheel(card, QPointF(5, 5), 1)) << "the wheel is the card's, wherever it stands";
        ++turns;
    }
    EXPECT_EQ(card.hiddenRows(), 0);
    EXPECT_TRUE(card.isLive(CardButton::allow));
    turnWheel(card, QPointF(5, 5), -100);
    EXPECT_GT(card.hiddenRows(), 0);
    click(CardButton::allow);
    EXPECT_EQ(answers.size(), 1U) << "seen is seen";
}

TEST_F(ApprovalCardTest, theStripUnderTheCommandTurnsThePage)
{
    show(manyLines(20));
    time.advance(1s);
    const QPointF strip(card.commandRect().center().x(), card.commandRect().bottom() - 6);
    int clicks = 0;
    while (card.hiddenRows() > 0 && clicks < 20) {
        press(card, strip);
        release(card, strip);
        ++clicks;
    }
    EXPECT_EQ(card.hiddenRows(), 0);
    EXPECT_GT(clicks, 1);
    EXPECT_TRUE(answers.empty());
}

TEST_F(ApprovalCardTest, aLowCardHidesRowsInsteadOfButtons)
{
    show(manyLines(6));
    time.advance(1s);
    ASSERT_EQ(card.hiddenRows(), 0);
    view.resize(view.width(), view.height() - 40);
    EXPECT_GT(card.hiddenRows(), 0);
    for (const CardButton button : allButtons)
        EXPECT_TRUE(card.rect().contains(card.buttonRect(button)));
    time.advance(5s);
    EXPECT_FALSE(card.isLive(CardButton::allow));
}

TEST_F(ApprovalCardTest, takesNoFocusAndNoKey)
{
    show(QStringLiteral("make"));
    time.advance(1s);
    EXPECT_EQ(card.focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(view.focusPolicy(), Qt::NoFocus);
    for (const int key :
         {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Y, Qt::Key_A, Qt::Key_Escape}) {
        for (QWidget* widget : {static_cast<QWidget*>(&card), static_cast<QWidget*>(&view)}) {
            QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
            QApplication::sendEvent(widget, &down);
            QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
            QApplication::sendEvent(widget, &up);
        }
    }
    EXPECT_TRUE(answers.empty());
    QContextMenuEvent menu(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(5, 5));
    QApplication::sendEvent(&card, &menu);
    EXPECT_TRUE(menu.isAccepted());
}

TEST_F(ApprovalCardTest, aCardThatIsGoneAnswersNobody)
{
    BubbleLook moving = view.look();
    moving.reducedMotion = false;
    view.setLook(moving);
    show(QStringLiteral("make"));
    time.advance(1s);
    view.dismiss();
    ASSERT_TRUE(card.isVisible()) << "it fades";
    for (const CardButton button : allButtons)
        click(button);
    view.present(narration(QStringLiteral("Hello")));
    for (const CardButton button : allButtons)
        click(button);
    EXPECT_TRUE(answers.empty());
}

TEST_F(ApprovalCardTest, everythingFitsInEverySizeAndLanguage)
{
    for (const BubbleStyle style : allStyles) {
        for (const AppLanguage language : bothLanguages) {
            BubbleLook look = view.look();
            look.style = style;
            look.language = language;
            view.setLook(look);
            const BubbleMetrics metrics = BubbleMetrics::of(style, card.font());
            const QFontMetricsF title(metrics.titleFont);
            for (const ProviderSpec& spec : ProviderRegistry::all()) {
                ApprovalBubble request = requestFor(QStringLiteral("npm install"), spec.id);
                request.prompt.title = spec.title + text(language, u" wants to continue", u" 想要继续");
                request.prompt.message = QStringLiteral("Because the build needs it");
                request.othersWaiting = 12;
                present(request);
                EXPECT_LE(title.horizontalAdvance(request.prompt.title) + title.height() + 8,
                          card.width() - 2 * metrics.padding)
                    << qUtf8Printable(request.prompt.title);
            }
            const std::pair<CardButton, QString> labels[] = {
                {CardButton::deny, text(language, u"Deny", u"拒绝")},
                {CardButton::allow, text(language, u"Allow", u"允许")},
                {CardButton::allowAll, text(language, u"Allow All", u"全部允许")},
            };
            int right = 0;
            for (const auto& [button, words] : labels) {
                const QRect place = card.buttonRect(button);
                EXPECT_TRUE(card.rect().contains(place));
                EXPECT_GT(place.top(), card.commandRect().bottom());
                EXPECT_LE(title.horizontalAdvance(words) + 8, place.width());
                if (right > 0) {
                    EXPECT_NEAR(place.left() - right, 8, 1);
                }
                right = place.x() + place.width();
            }
            EXPECT_NEAR(right, card.width() - metrics.padding, 1) << "at the trailing edge";
        }
    }
}

// The dead and the live look differ, the pressed and the free too.
TEST_F(ApprovalCardTest, showsWhatIsLiveAndWhatIsPressed)
{
    BubbleLook moving = view.look();
    moving.reducedMotion = false;
    view.setLook(moving);
    show(QStringLiteral("make"));
    time.advance(0.5s);
    const QRect allow = card.buttonRect(CardButton::allow);
    const QImage dead = card.grab(allow).toImage();
    time.advance(0.5s);
    const QImage live = card.grab(allow).toImage();
    EXPECT_NE(dead, live);
    press(card, middle(CardButton::allow));
    EXPECT_GT(time.waiting(), 0);
    time.advance(0.1s);
    EXPECT_NE(card.grab(allow).toImage(), live);
    release(card, QPointF(-40, -40));
    time.advance(2s);
    EXPECT_EQ(card.grab(allow).toImage(), live);
    EXPECT_EQ(time.waiting(), 0) << "nothing ticks when nothing moves";
}

TEST_F(ApprovalCardTest, warnsOfHiddenCharacters)
{
    show(QStringLiteral("ls"));
    EXPECT_FALSE(card.warns());
    const int plain = view.preferredSize().height();
    show(QStringLiteral("ls\u202E"));
    EXPECT_TRUE(card.warns());
    EXPECT_GT(view.preferredSize().height(), plain);
    EXPECT_EQ(card.rows().row(0).text(), QStringLiteral("ls<U+202E>"));
}

TEST(CommandRows, holdEveryCharacterWithinTheWidth)
{
    const QFont font = BubbleMetrics::of(BubbleStyle::normal, QFont()).commandFont;
    const QFontMetricsF metrics(font);
    const QString commands[] = {
        QStringLiteral("a b c"),
        QStringLiteral(
            "curl https://example.org/a/very/long/path/without/any/blank/in/it/that/goes/on/and/on | sh"),
        QString(5000, u'x'),
        QStringLiteral("中文").repeated(300),
        QStringLiteral("👩‍👩‍👧‍👦 🏳️‍🌈 ").repeated(60),
        QStringLiteral("שלום עולם 123 ").repeated(40),
        QStringLiteral("e\u0301\u0302\u0303").repeated(200),
        QString(200, QChar(0x202E)),
        manyLines(300),
        QString(200'000, u'y'),
    };
    for (const double width : {60.0, 200.0, 333.0}) {
        for (const QString& command : commands) {
            const bool ascii =
                std::all_of(command.begin(), command.end(), [](QChar c) { return c.unicode() < 128; });
            const CommandDisplay display = CommandDisplay::of(command, AppLanguage::en);
            const CommandRows rows(display, font, width);
            QStringList lines;
            for (int row = 0; row < rows.count(); ++row) {
                const CommandRow& line = rows.row(row);
                if (line.continues)
                    lines.last() += line.text();
                else
                    lines += line.text();
                if (ascii && row < 400) {
                    ASSERT_LE(metrics.horizontalAdvance(line.text()), width + 0.5)
                        << qUtf8Printable(line.text());
                }
            }
            ASSERT_EQ(static_cast<size_t>(lines.size()), display.lines.size());
            for (qsizetype line = 0; line < lines.size(); ++line)
                ASSERT_EQ(lines[line], display.lines[static_cast<size_t>(line)].text());
        }
    }
}

TEST(CommandRows, rightToLeftWordsKeepTheOrderOfTheCommand)
{
    const QString command = QStringLiteral("echo שלום 12 > 34 עולם ; سلام 5 < 6 مرحبا");
    const QString ordered = CommandRows::inCommandOrder(command);
    QTextLayout layout(ordered, QFont());
    QTextOption option;
    option.setTextDirection(Qt::LeftToRight);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    double last = -1;
    qsizetype from = 0;
    for (const QString& word : command.split(u' ')) {
        const qsizetype start = ordered.indexOf(word, from);
        ASSERT_GE(start, 0);
        from = start + word.size();
        const double x =
            std::min(line.cursorToX(static_cast<int>(start)), line.cursorToX(static_cast<int>(from)));
        EXPECT_GT(x, last) << qUtf8Printable(word);
        last = x;
    }
    EXPECT_EQ(CommandRows::inCommandOrder(QStringLiteral("ls -l 中文")), QStringLiteral("ls -l 中文"));
}

} // namespace
} // namespace nibbo
