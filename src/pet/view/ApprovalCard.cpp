#include "pet/view/ApprovalCard.h"

#include "pet/view/BubbleFrame.h"
#include "pet/view/TintedIcon.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace nibbo {
namespace {

constexpr double buttonSpacing = 8.0;
constexpr double commandInset = 7.0;
constexpr double wrapGutter = 10.0;
constexpr double scrollGutter = 6.0;
constexpr double rowsPerNotch = 3.0;
constexpr Milliseconds frameTime{16};

constexpr std::array allButtons{CardButton::deny, CardButton::allow, CardButton::allowAll};

QString label(CardButton button, AppLanguage language)
{
    switch (button) {
    case CardButton::deny:
        return text(language, u"Deny", u"拒绝");
    case CardButton::allow:
        return text(language, u"Allow", u"允许");
    case CardButton::allowAll:
        return text(language, u"Allow All", u"全部允许");
    }
    return {};
}

size_t indexOf(CardButton button)
{
    return static_cast<size_t>(button);
}

/// What makes two requests the same to the person who looks at them. The count of the others that wait has
/// its place reserved and changes nothing else.
bool saysTheSame(const ApprovalBubble& a, const ApprovalBubble& b)
{
    return a.prompt.eventId == b.prompt.eventId && a.prompt.provider == b.prompt.provider &&
           a.prompt.title == b.prompt.title && a.prompt.command == b.prompt.command &&
           a.prompt.risk == b.prompt.risk && a.prompt.message == b.prompt.message && a.folder == b.folder;
}

QString onOneLine(const QString& words)
{
    return calmed(words).replace(u'\n', u' ');
}

QString waitingText(int others, AppLanguage language)
{
    return text(language, u"+%1 waiting", u"还有 %1 个等待").arg(others);
}

double textWidth(const QFont& font, const QString& words)
{
    return QFontMetricsF(font).horizontalAdvance(words);
}

double textHeight(const QFont& font)
{
    return std::ceil(QFontMetricsF(font).height());
}

void drawText(QPainter& painter, const QRectF& place, int flags, const QFont& font, const QColor& colour,
              const QString& words, Qt::TextElideMode mode = Qt::ElideRight)
{
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(place, flags | Qt::TextSingleLine,
                     QFontMetricsF(font).elidedText(words, mode, place.width()));
}

void drawPill(QPainter& painter, const QRectF& place, const QColor& fill)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    const double radius = std::min(place.width(), place.height()) / 2;
    painter.drawRoundedRect(place, radius, radius);
}

void drawCautionSign(QPainter& painter, const QRectF& square, const QColor& colour)
{
    const double line = square.width() * 0.11;
    const QPointF top(square.center().x(), square.top() + line);
    QPainterPath triangle(top);
    triangle.lineTo(square.right() - line, square.bottom() - line * 1.5);
    triangle.lineTo(square.left() + line, square.bottom() - line * 1.5);
    triangle.closeSubpath();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(triangle);
    const double middle = square.center().x();
    painter.drawLine(QPointF(middle, square.top() + square.height() * 0.40),
                     QPointF(middle, square.top() + square.height() * 0.58));
    painter.drawPoint(QPointF(middle, square.top() + square.height() * 0.74));
}

} // namespace

ApprovalCard::ApprovalCard(const Clock& clock, Scheduler& scheduler, QWidget* parent)
    : QWidget(parent)
    , m_clock(clock)
    , m_scheduler(scheduler)
    , m_guard(clock)
    , m_metrics(BubbleMetrics::of(m_look.style, font()))
{
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);
    setCursor(Qt::ArrowCursor);
}

void ApprovalCard::setLook(const BubbleLook& look)
{
    if (m_look == look)
        return;
    m_look = look;
    compose();
}

void ApprovalCard::present(const ApprovalBubble& request)
{
    const bool same = m_request && saysTheSame(*m_request, request);
    m_request = request;
    m_drawn = request;
    if (same) {
        update();
        return;
    }
    m_firstRow = 0;
    m_hovered.reset();
    m_pressedButton.reset();
    compose();
}

void ApprovalCard::retire()
{
    m_request.reset();
    m_guard.gone();
    m_wake.reset();
    m_pressedButton.reset();
    m_hovered.reset();
    unsetCursor();
    update();
}

/// Everything that follows from the request and the look.
void ApprovalCard::compose()
{
    m_metrics = BubbleMetrics::of(m_look.style, font());
    const ApprovalPrompt& prompt = m_drawn.prompt;
    m_title = onOneLine(prompt.title);
    m_folder = onOneLine(m_drawn.folder);

    double buttons = -buttonSpacing;
    for (const QRectF& button : arrange(m_metrics.cardWidth, std::nullopt).buttons)
        buttons += button.width() + buttonSpacing;
    // A name in a small card may want a little more room; an endless one does not get it.
    const double icon = textHeight(m_metrics.titleFont) + 8;
    const double titled = std::min(textWidth(m_metrics.titleFont, m_title) + icon, m_metrics.cardWidth * 1.2);
    m_cardWidth = std::ceil(std::max({m_metrics.cardWidth, buttons + 2 * padding(), titled + 2 * padding()}));

    const bool onlyMessage = prompt.command.trimmed().isEmpty();
    const QString& command = onlyMessage ? prompt.message : prompt.command;
    const bool repeats = onlyMessage || prompt.message.trimmed() == prompt.command.trimmed();
    const double inner = m_cardWidth - 2 * padding();
    m_message = repeats ? TextBlock() : TextBlock(calmed(prompt.message), m_metrics.smallFont, inner, 2);
    m_command = CommandDisplay::of(command, m_look.language);
    m_rowsWidth = 0;
    wrapCommand(m_cardWidth);
    m_wantedHeight = std::ceil(arrange(m_cardWidth, std::nullopt).height);
    setAccessibleName(m_title);
    setAccessibleDescription(command);
    updateGeometry();
    rearrange();
}

QSize ApprovalCard::preferredSize() const
{
    return QSizeF(m_cardWidth, m_wantedHeight).toSize();
}

/// From the top: who asks; risk and folder; the agent's reason; the warning; the command, which gives way
/// when there is less height than wanted; the buttons at the trailing edge.
ApprovalCard::Geometry ApprovalCard::arrange(double width, std::optional<double> height) const
{
    Geometry place;
    const double left = padding();
    const double inner = width - 2 * padding();
    double y = padding();
    const auto take = [&](double wanted, double gapAfter) {
        const QRectF row(left, y, inner, wanted);
        y += wanted + gapAfter;
        return row;
    };
    const double gap = m_metrics.gap;
    place.header = take(textHeight(m_metrics.titleFont) + 2, gap * 0.7);
    place.facts = take(textHeight(m_metrics.smallFont) + 4, gap);
    if (m_message.size().height() > 0)
        place.message = take(m_message.size().height(), gap);
    if (warns())
        place.warning = take(textHeight(m_metrics.smallFont) + 8, gap);

    const double footerHeight = textHeight(m_metrics.smallFont) + 4;
    const double buttonHeight = textHeight(m_metrics.smallFont) + 11;
    const double below = gap * 1.3 + buttonHeight + padding();
    const double rowHeight = std::max(1.0, m_rows.rowHeight());
    const int wanted = std::min(m_rows.count(), m_metrics.commandRows);
    int rows = wanted;
    const auto commandHeight = [&](int visible) {
        return visible * rowHeight + 2 * commandInset + (visible < m_rows.count() ? footerHeight : 0.0);
    };
    while (height && rows > 1 && y + commandHeight(rows) + below > *height + 0.5)
        --rows;
    place.visibleRows = rows;
    place.command = take(commandHeight(rows), gap * 1.3);
    if (rows < m_rows.count())
        place.footer = QRectF(left, place.command.bottom() - footerHeight, inner, footerHeight);

    double x = left + inner;
    for (size_t index = allButtons.size(); index-- > 0;) {
        const QString words = label(allButtons[index], m_look.language);
        const double buttonWidth = std::ceil(std::max(50.0, textWidth(m_metrics.titleFont, words) + 22));
        x -= buttonWidth;
        place.buttons[index] = QRectF(x, y, buttonWidth, buttonHeight);
        x -= buttonSpacing;
    }
    place.height = y + buttonHeight + padding();
    return place;
}

void ApprovalCard::wrapCommand(double width)
{
    const double room = width - 2 * (padding() + commandInset) - wrapGutter - scrollGutter;
    if (std::exchange(m_rowsWidth, room) != room)
        m_rows = CommandRows(m_command, m_metrics.commandFont, std::max(40.0, room));
}

void ApprovalCard::rearrange()
{
    // Less room than wanted must not push the ends of rows out of sight.
    wrapCommand(std::min(m_cardWidth, width() > 0 ? double(width()) : m_cardWidth));
    m_geometry = arrange(width(), height());
    m_firstRow = std::clamp(m_firstRow, 0.0, std::max(0.0, double(m_rows.count() - m_geometry.visibleRows)));
    buttonsChanged();
    update();
}

void ApprovalCard::buttonsChanged()
{
    if (!m_request)
        return;
    m_guard.changed();
    m_pressedButton.reset();
    noteWhatIsSeen();
}

void ApprovalCard::noteWhatIsSeen()
{
    if (m_request && isVisible() && hiddenRows() == 0)
        m_guard.endSeen();
    planWake();
}

/// One step for the moment at which a button comes to life; none when only the user can wake one.
void ApprovalCard::planWake()
{
    const auto wake = m_guard.nextWake();
    if (!wake) {
        m_wake.reset();
        return;
    }
    const auto wait = std::chrono::ceil<Milliseconds>(*wake - m_clock.now());
    m_wake = m_scheduler.after(wait, [this] {
        update();
        planWake();
    });
}

void ApprovalCard::animatePress()
{
    update();
    if (m_look.reducedMotion || m_pressMotion)
        return;
    m_pressMotion = m_scheduler.every(frameTime, [this] {
        update();
        if (m_scale.isResting(m_clock.now()))
            m_pressMotion.reset();
    });
}

int ApprovalCard::hiddenRows() const
{
    const double hidden = m_rows.count() - (m_firstRow + m_geometry.visibleRows);
    return static_cast<int>(std::ceil(std::max(0.0, hidden - 0.05)));
}

void ApprovalCard::scrollTo(double row)
{
    const double last = std::max(0.0, double(m_rows.count() - m_geometry.visibleRows));
    m_firstRow = std::clamp(row, 0.0, last);
    noteWhatIsSeen();
    update();
}

void ApprovalCard::setPresence(double presence, QPointF origin)
{
    m_presence = presence;
    m_origin = origin;
    update();
}

QRect ApprovalCard::buttonRect(CardButton button) const
{
    return m_geometry.buttons[indexOf(button)].toAlignedRect();
}

QRect ApprovalCard::commandRect() const
{
    return m_geometry.command.toAlignedRect();
}

std::optional<CardButton> ApprovalCard::buttonAt(QPointF point) const
{
    for (const CardButton button : allButtons) {
        if (m_geometry.buttons[indexOf(button)].contains(point))
            return button;
    }
    return std::nullopt;
}

/// The left button alone presses; a chord or another button is no answer.
std::optional<CardButton> ApprovalCard::buttonUnder(const QMouseEvent& event) const
{
    return event.button() == Qt::LeftButton ? buttonAt(event.position()) : std::nullopt;
}

bool ApprovalCard::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (buttonAt(help->pos()) == CardButton::allowAll) {
            const QString words = text(
                m_look.language, u"Allow All: ordinary commands won't ask again (dangerous ones still will).",
                u"全部允许：普通命令以后不再询问（危险命令仍会问）");
            QToolTip::showText(help->globalPos(), words, this, buttonRect(CardButton::allowAll));
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    const bool done = QWidget::event(event);
    if (event->type() == QEvent::FontChange)
        compose();
    return done;
}

void ApprovalCard::resizeEvent(QResizeEvent*)
{
    rearrange();
}

void ApprovalCard::moveEvent(QMoveEvent*)
{
    buttonsChanged();
}

void ApprovalCard::showEvent(QShowEvent*)
{
    buttonsChanged();
}

void ApprovalCard::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    if (event->button() != Qt::LeftButton) {
        m_guard.cancelPress();
        return;
    }
    const std::optional<CardButton> button = buttonUnder(*event);
    m_guard.press(button);
    m_pressedButton = button;
    if (button) {
        m_scale.press(m_clock.now());
        animatePress();
    } else if (m_geometry.footer.contains(event->position())) {
        scrollTo(std::floor(m_firstRow) + m_geometry.visibleRows);
    }
}

void ApprovalCard::mouseDoubleClickEvent(QMouseEvent* event)
{
    // Qt sends it in place of the second press, which counts like any other.
    mousePressEvent(event);
}

void ApprovalCard::mouseMoveEvent(QMouseEvent* event)
{
    event->accept();
    const std::optional<CardButton> button = m_request ? buttonAt(event->position()) : std::nullopt;
    setCursor(button || m_geometry.footer.contains(event->position()) ? Qt::PointingHandCursor
                                                                      : Qt::ArrowCursor);
    if (std::exchange(m_hovered, button) != button)
        update();
}

void ApprovalCard::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    if (event->button() != Qt::LeftButton)
        return;
    m_scale.release(m_clock.now());
    animatePress();
    const std::optional<CardButton> answer = m_guard.release(buttonUnder(*event));
    planWake();
    if (answer)
        Q_EMIT answered(*answer);
}

void ApprovalCard::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
}

void ApprovalCard::wheelEvent(QWheelEvent* event)
{
    event->accept();
    const double rows = event->pixelDelta().isNull()
                            ? event->angleDelta().y() / 120.0 * rowsPerNotch
                            : event->pixelDelta().y() / std::max(1.0, m_rows.rowHeight());
    if (rows != 0.0)
        scrollTo(m_firstRow - rows);
}

void ApprovalCard::leaveEvent(QEvent*)
{
    m_hovered.reset();
    update();
}

void ApprovalCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    applyPresence(painter, m_presence, m_origin);
    drawHeader(painter);
    drawFacts(painter);
    m_message.draw(painter, m_geometry.message.topLeft(), m_geometry.message.width(),
                   m_look.colours().quietText);
    if (warns())
        drawWarning(painter);
    drawCommand(painter);
    for (const CardButton button : allButtons)
        drawButton(painter, button);
}

void ApprovalCard::drawHeader(QPainter& painter) const
{
    const BubbleColours& colours = m_look.colours();
    QRectF rest = m_geometry.header;
    const TintedIcon icon = TintedIcon::ofProvider(m_drawn.prompt.provider);
    if (!icon.isEmpty()) {
        const double side = rest.height() - 2;
        icon.draw(painter, QRectF(rest.left(), rest.top() + 1, side, side), colours.accentText);
        rest.setLeft(rest.left() + side + 6);
    }
    drawText(painter, rest, Qt::AlignVCenter | Qt::AlignLeft, m_metrics.titleFont, colours.text, m_title);
}

void ApprovalCard::drawFacts(QPainter& painter) const
{
    const BubbleColours& colours = m_look.colours();
    const bool risky = m_drawn.prompt.risk == ApprovalRisk::risky;
    const QString words = title(m_drawn.prompt.risk, m_look.language);
    QRectF rest = m_geometry.facts;
    const double sign = risky ? rest.height() - 5 : 0.0;
    const double width = std::ceil(textWidth(m_metrics.smallFont, words)) + 16 + (risky ? sign + 2 : 0.0);
    QRectF pill(rest.left(), rest.top(), width, rest.height());
    drawPill(painter, pill, risky ? colours.dangerFill : colours.inset);
    const QColor& colour = risky ? colours.danger : colours.quietText;
    if (risky) {
        drawCautionSign(painter, QRectF(pill.left() + 7, pill.top() + 2, sign, sign), colour);
        pill.setLeft(pill.left() + sign + 4);
    }
    drawText(painter, pill, Qt::AlignCenter, m_metrics.smallFont, colour, words);
    rest.setLeft(pill.right() + 8);
    if (m_drawn.othersWaiting > 0) {
        const QString count = waitingText(m_drawn.othersWaiting, m_look.language);
        const double room = std::ceil(textWidth(m_metrics.smallFont, count)) + 14;
        const QRectF waiting(rest.right() - room, rest.top(), room, rest.height());
        drawPill(painter, waiting, colours.inset);
        drawText(painter, waiting, Qt::AlignCenter, m_metrics.smallFont, colours.quietText, count);
        rest.setRight(waiting.left() - 8);
    }
    drawText(painter, rest, Qt::AlignVCenter | Qt::AlignLeft, m_metrics.smallFont, colours.quietText,
             m_folder, Qt::ElideLeft);
}

void ApprovalCard::drawWarning(QPainter& painter) const
{
    const BubbleColours& colours = m_look.colours();
    QRectF rest = m_geometry.warning;
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.cautionFill);
    painter.drawRoundedRect(rest, 6, 6);
    const double side = rest.height() - 8;
    drawCautionSign(painter, QRectF(rest.left() + 7, rest.top() + 3.5, side, side), colours.caution);
    rest.adjust(side + 13, 0, -7, 0);
    drawText(painter, rest, Qt::AlignVCenter | Qt::AlignLeft, m_metrics.smallFont, colours.caution,
             text(m_look.language, u"Hidden characters are marked", u"含有隐藏字符，已标出"));
}

void ApprovalCard::drawCommand(QPainter& painter) const
{
    const BubbleColours& colours = m_look.colours();
    const QRectF& box = m_geometry.command;
    painter.setPen(QPen(colours.insetOutline, 1));
    painter.setBrush(colours.inset);
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);

    const double rowHeight = m_rows.rowHeight();
    const QRectF text(box.left() + commandInset, box.top() + commandInset, box.width() - 2 * commandInset,
                      m_geometry.visibleRows * rowHeight);
    const double gutter = m_rows.wraps() ? wrapGutter : 2.0;
    painter.save();
    painter.setClipRect(text.adjusted(-1, -1, 1, 0));
    const int first = static_cast<int>(m_firstRow);
    const int last = std::min(m_rows.count() - 1, first + m_geometry.visibleRows);
    for (int row = first; row <= last; ++row) {
        const double y = text.top() + (row - m_firstRow) * rowHeight;
        if (m_rows.row(row).continues) {
            painter.setPen(QPen(colours.quietText, 1.0));
            const double middle = y + rowHeight * 0.55;
            painter.drawPolyline(QPolygonF(
                {{text.left() + 2, middle - 4}, {text.left() + 2, middle}, {text.left() + 6, middle}}));
        }
        m_rows.draw(painter, row, QPointF(text.left() + gutter, y), colours);
    }
    painter.restore();
    if (m_geometry.footer.isEmpty())
        return;

    const double track = text.height();
    const double share = double(m_geometry.visibleRows) / m_rows.count();
    const double thumb = std::max(14.0, track * share);
    const double way = m_firstRow / std::max(1, m_rows.count() - m_geometry.visibleRows);
    QColor quiet = colours.quietText;
    quiet.setAlpha(110);
    drawPill(painter, QRectF(box.right() - 6.5, text.top() + way * (track - thumb), 3, thumb), quiet);

    const int hidden = hiddenRows();
    const AppLanguage language = m_look.language;
    QString words = nibbo::text(language, u"End of the command", u"命令到此结束");
    if (hidden > 0) {
        words = hidden == 1 ? nibbo::text(language, u"1 more line", u"还有 1 行")
                            : nibbo::text(language, u"%1 more lines", u"还有 %1 行").arg(hidden);
        if (m_request && !m_guard.hasSeenEnd())
            words += nibbo::text(language, u" – read on to allow", u"，看完才能允许");
    }
    painter.setPen(QPen(colours.insetOutline, 1));
    painter.drawLine(m_geometry.footer.topLeft() + QPointF(1, 0),
                     m_geometry.footer.topRight() - QPointF(1, 0));
    drawText(painter, m_geometry.footer.adjusted(8, 0, -8, 0), Qt::AlignCenter, m_metrics.smallFont,
             hidden > 0 ? colours.accentText : colours.quietText, words);
}

void ApprovalCard::drawButton(QPainter& painter, CardButton button) const
{
    const BubbleColours& colours = m_look.colours();
    const QRectF place = m_geometry.buttons[indexOf(button)];
    const bool live = m_request && m_guard.isLive(button);
    painter.save();
    if (!live)
        painter.setOpacity(painter.opacity() * 0.42);
    if (m_pressedButton == button) {
        const double scale = m_look.reducedMotion ? 1.0 : m_scale.at(m_clock.now());
        painter.translate(place.center());
        painter.scale(scale, scale);
        painter.translate(-place.center());
    }
    QColor fill = colours.control;
    QColor outline = colours.controlOutline;
    QColor words = colours.text;
    if (button == CardButton::deny) {
        fill = colours.dangerFill;
        outline = colours.dangerOutline;
        words = colours.danger;
    } else if (button == CardButton::allow) {
        fill = colours.accent;
        outline = colours.accent;
        words = colours.onAccent;
    }
    if (live && m_hovered == button) {
        if (button == CardButton::deny)
            fill.setAlpha(fill.alpha() * 2);
        else
            fill = m_look.scheme == ColourScheme::dark ? fill.lighter(112) : fill.darker(106);
    }
    painter.setPen(QPen(outline, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), 7, 7);
    drawText(painter, place, Qt::AlignCenter,
             button == CardButton::allow ? m_metrics.titleFont : m_metrics.font, words,
             label(button, m_look.language));
    painter.restore();
}

} // namespace nibbo
