#include "pet/view/BubbleView.h"

#include "pet/view/ApprovalCard.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace nibbo {
namespace {

constexpr Seconds appearTime{0.18};
constexpr Seconds leaveTime{0.14};
constexpr Milliseconds frameTime{16};
constexpr double iconGap = 5.0;
constexpr double chipPadding = 7.0;

struct Words
{
    QString activity;
    QString text;
    bool textIsActivity = false;
};

QString onOneLine(const QString& words)
{
    return calmed(words).replace(u'\n', u' ');
}

Words wordsOf(const BubbleContent& content)
{
    if (const auto* message = std::get_if<MessageBubble>(&content.kind))
        return {{}, calmed(message->text), false};
    if (const auto* narration = std::get_if<NarrationBubble>(&content.kind)) {
        const QString detail = onOneLine(narration->detail.value_or(QString()));
        return {detail, calmed(narration->text), detail.isEmpty()};
    }
    return {};
}

double textHeight(const QFont& font)
{
    return std::ceil(QFontMetricsF(font).height());
}

} // namespace

BubbleView::BubbleView(const Clock& clock, Scheduler& scheduler, QWidget* parent)
    : BubblePane(parent)
    , m_clock(clock)
    , m_scheduler(scheduler)
    , m_card(new ApprovalCard(clock, scheduler, this))
    , m_metrics(BubbleMetrics::of(m_look.style, font()))
{
    setFocusPolicy(Qt::NoFocus);
    setVisible(false);
    m_card->setVisible(false);
    connect(m_card, &ApprovalCard::answered, this, [this](CardButton button) {
        if (m_card->request())
            Q_EMIT answered(m_card->request()->prompt.eventId, button);
    });
}

bool BubbleView::showsCard() const
{
    return m_content && std::holds_alternative<ApprovalBubble>(m_content->kind);
}

void BubbleView::setLook(const BubbleLook& look)
{
    if (m_look == look)
        return;
    m_look = look;
    m_card->setLook(look);
    compose();
    announceSize();
    update();
}

void BubbleView::present(const BubbleContent& content)
{
    const bool same = m_wanted && m_content == content;
    if (same)
        return;
    const bool wasCard = m_wanted && showsCard();
    m_content = content;
    if (const auto* request = std::get_if<ApprovalBubble>(&content.kind))
        m_card->present(*request);
    else
        m_card->retire();
    m_card->setVisible(showsCard());
    setAccessibleName(plainText(content.kind));
    compose();
    if (!std::exchange(m_wanted, true))
        startMotion();
    announceSize();
    if (wasCard != showsCard())
        Q_EMIT clickRegionChanged();
    update();
}

void BubbleView::dismiss()
{
    if (!std::exchange(m_wanted, false))
        return;
    m_card->retire();
    if (showsCard())
        Q_EMIT clickRegionChanged();
    startMotion();
}

/// Presence runs from where it is to where it shall be; a bubble that comes back while it leaves turns
/// around.
void BubbleView::startMotion()
{
    m_movedFrom = m_presence;
    m_movedAt = m_clock.now();
    const bool still = m_look.reducedMotion || !m_look.composited;
    if (still) {
        m_movedFrom = m_wanted ? 1.0 : 0.0;
        m_motion.reset();
    } else if (!m_motion) {
        m_motion = m_scheduler.every(frameTime, [this] { step(); });
    }
    step();
}

void BubbleView::step()
{
    const Seconds whole = m_wanted ? appearTime : leaveTime;
    const double target = m_wanted ? 1.0 : 0.0;
    const double way = std::clamp(Seconds(m_clock.now() - m_movedAt) / whole, 0.0, 1.0);
    m_presence = m_movedFrom + (target - m_movedFrom) * (1.0 - std::pow(1.0 - way, 3));
    m_card->setPresence(m_presence, m_frame.tip() - m_card->pos());
    update();
    if (m_presence != target)
        return;
    m_motion.reset();
    if (!m_wanted) {
        m_content.reset();
        m_card->setVisible(false);
        announceSize();
    }
}

void BubbleView::compose()
{
    m_metrics = BubbleMetrics::of(m_look.style, font());
    m_chipIcon = {};
    m_chipName.clear();
    m_activityIcon = {};
    m_activity = {};
    m_words = {};
    m_iconBesideWords = false;
    if (!m_content)
        return;
    if (showsCard()) {
        m_bodySize = m_card->preferredSize();
        place();
        return;
    }

    const Words words = wordsOf(*m_content);
    const double width = m_metrics.textWidth;
    double widest = 2 * m_metrics.radius;
    double height = 0;
    const auto add = [&](double lineWidth, double lineHeight) {
        widest = std::max(widest, lineWidth);
        height += (height > 0 ? m_metrics.gap * 0.7 : 0.0) + lineHeight;
    };
    const double icon = textHeight(m_metrics.smallFont);
    if (m_look.showProviderChip && m_content->provider) {
        m_chipIcon = TintedIcon::ofProvider(*m_content->provider);
        const double frame = 2 * chipPadding + (m_chipIcon.isEmpty() ? 0.0 : icon + iconGap - 2);
        const QFontMetricsF metrics(m_metrics.smallFont);
        m_chipName =
            metrics.elidedText(onOneLine(m_content->provider->displayName()), Qt::ElideRight, width - frame);
        add(std::ceil(metrics.horizontalAdvance(m_chipName)) + frame, icon + 4);
    }
    if (m_look.showActivityLabel) {
        const auto name = activityIcon(m_content->state);
        if (name && !std::holds_alternative<MessageBubble>(m_content->kind))
            m_activityIcon = TintedIcon::ofActivity(*name);
        const double room = m_activityIcon.isEmpty() ? 0.0 : icon + iconGap;
        if (!words.activity.isEmpty()) {
            m_activity = TextBlock(words.activity, m_metrics.smallFont, width - room, 1);
            add(m_activity.size().width() + room, std::max(icon, m_activity.size().height()));
        }
        m_iconBesideWords = words.textIsActivity && room > 0;
    }
    if (!words.text.isEmpty()) {
        const double room = m_iconBesideWords ? textHeight(m_metrics.font) + iconGap : 0.0;
        m_words = TextBlock(words.text, m_metrics.font, width - room, m_metrics.textLines);
        add(m_words.size().width() + room, m_words.size().height());
    }
    const double vertical = std::round(m_metrics.padding * 0.75);
    m_bodySize =
        QSizeF(std::max(widest + 2 * m_metrics.padding, 4 * m_metrics.radius), height + 2 * vertical);
    place();
}

void BubbleView::scrollCard(double rows)
{
    m_card->scrollBy(rows);
}

QSize BubbleView::preferredSize() const
{
    if (!m_content)
        return {};
    const QMarginsF margins = BubbleFrame::margins(m_tailSide);
    return QSize(static_cast<int>(std::ceil(m_bodySize.width() + margins.left() + margins.right())),
                 static_cast<int>(std::ceil(m_bodySize.height() + margins.top() + margins.bottom())));
}

QRegion BubbleView::clickRegion() const
{
    return m_wanted && showsCard() ? QRegion(m_frame.body().toAlignedRect()) : QRegion();
}

void BubbleView::announceSize()
{
    const QSize size = preferredSize();
    setVisible(!size.isEmpty());
    if (std::exchange(m_announced, size) != size)
        Q_EMIT preferredSizeChanged();
}

void BubbleView::setTail(TailSide side, int tip)
{
    if (m_tailSide == side && m_tip == tip)
        return;
    m_tailSide = side;
    m_tip = tip;
    place();
}

/// Frame and card for the size that the window gave.
void BubbleView::place()
{
    if (size().isEmpty())
        return;
    const QRegion before = clickRegion();
    m_frame.shape(size(), m_tailSide, m_tip, m_metrics.radius);
    m_card->setGeometry(m_frame.body().toAlignedRect());
    m_card->setPresence(m_presence, m_frame.tip() - m_card->pos());
    if (clickRegion() != before)
        Q_EMIT clickRegionChanged();
    update();
}

void BubbleView::resizeEvent(QResizeEvent*)
{
    place();
}

void BubbleView::moveEvent(QMoveEvent*)
{
    m_card->placeChanged();
}

void BubbleView::changeEvent(QEvent* event)
{
    BubblePane::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        compose();
        announceSize();
    }
}

void BubbleView::paintEvent(QPaintEvent*)
{
    if (!m_content)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    applyPresence(painter, m_presence, m_frame.tip());
    m_frame.draw(painter, m_look);
    if (!showsCard())
        drawWords(painter);
}

void BubbleView::drawWords(QPainter& painter)
{
    const BubbleColours& colours = m_look.colours();
    const double vertical = std::round(m_metrics.padding * 0.75);
    const QRectF inner = m_frame.body().adjusted(m_metrics.padding, vertical, -m_metrics.padding, -vertical);
    const double icon = textHeight(m_metrics.smallFont);
    double y = inner.top();
    if (!m_chipName.isEmpty()) {
        const double textWidth = std::ceil(QFontMetricsF(m_metrics.smallFont).horizontalAdvance(m_chipName));
        const double iconRoom = m_chipIcon.isEmpty() ? 0.0 : icon + iconGap - 2;
        const QRectF chip(inner.left(), y, textWidth + iconRoom + 2 * chipPadding, icon + 4);
        painter.setPen(QPen(colours.insetOutline, 1));
        painter.setBrush(colours.inset);
        painter.drawRoundedRect(chip.adjusted(0.5, 0.5, -0.5, -0.5), chip.height() / 2, chip.height() / 2);
        m_chipIcon.draw(painter, QRectF(chip.left() + chipPadding, chip.top() + 2, icon, icon),
                        colours.accentText);
        painter.setFont(m_metrics.smallFont);
        painter.setPen(colours.quietText);
        painter.drawText(chip.adjusted(chipPadding + iconRoom, 0, 0, 0),
                         Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, m_chipName);
        y = chip.bottom() + m_metrics.gap * 0.7;
    }
    if (m_activity.size().height() > 0) {
        const double room = m_activityIcon.isEmpty() ? 0.0 : icon + iconGap;
        const double height = std::max(icon, m_activity.size().height());
        m_activityIcon.draw(painter, QRectF(inner.left(), y + (height - icon) / 2, icon, icon),
                            colours.accentText);
        m_activity.draw(painter, {inner.left() + room, y + (height - m_activity.size().height()) / 2},
                        inner.width() - room, colours.quietText);
        y += height + m_metrics.gap * 0.7;
    }
    const double side = m_iconBesideWords ? textHeight(m_metrics.font) : 0.0;
    if (m_iconBesideWords) {
        const double line = m_words.size().height() / static_cast<double>(m_words.lines().size());
        m_activityIcon.draw(painter, QRectF(inner.left(), y + (line - side) / 2, side, side),
                            colours.accentText);
    }
    const double room = m_iconBesideWords ? side + iconGap : 0.0;
    m_words.draw(painter, {inner.left() + room, y}, inner.width() - room, colours.text);
}

} // namespace nibbo
