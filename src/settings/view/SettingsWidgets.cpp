#include "settings/view/SettingsWidgets.h"

#include "settings/view/Theme.h"

#include <QCoreApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include <utility>

namespace nibbo {
namespace {

constexpr int rowMargin = 16;
constexpr int rowPadding = 11;
constexpr double groupRadius = 10;

} // namespace

ToggleSwitch::ToggleSwitch(QWidget* parent)
    : QCheckBox(parent)
{
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ToggleSwitch::sizeHint() const
{
    const int height = qMax(20, fontMetrics().height() + 6);
    return {height * 7 / 4 + 6, height + 6};
}

void ToggleSwitch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(rect()).adjusted(3, 3, -3, -3);
    const double radius = track.height() / 2;
    const QColor base =
        theme::mixed(palette().color(QPalette::Window), palette().color(QPalette::WindowText), 0.32);
    QColor fill = isChecked() ? palette().color(QPalette::Active, QPalette::Highlight) : base;
    if (!isEnabled())
        fill.setAlphaF(0.4F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(track, radius, radius);
    const double knob = track.height() - 4;
    const bool atEnd = isChecked() != (layoutDirection() == Qt::RightToLeft);
    const double left = atEnd ? track.right() - knob - 2 : track.left() + 2;
    painter.setBrush(isEnabled() ? QColor(Qt::white) : QColor(255, 255, 255, 190));
    painter.drawEllipse(QRectF(left, track.top() + 2, knob, knob));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::WindowText), 1.2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius + 2, radius + 2);
    }
}

TextLabel::TextLabel(Tone tone, QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setTone(tone);
}

void TextLabel::setTone(Tone tone)
{
    // The palette of the window keeps the caution's colour where visited links have theirs; there are none.
    setForegroundRole(tone == Tone::quiet     ? QPalette::PlaceholderText
                      : tone == Tone::caution ? QPalette::LinkVisited
                                              : QPalette::WindowText);
}

SettingRow::SettingRow(QWidget* control, Place place, QWidget* parent)
    : QWidget(parent)
    , m_title(new TextLabel(TextLabel::Tone::ordinary, this))
    , m_detail(new TextLabel(TextLabel::Tone::quiet, this))
    , m_control(control)
{
    m_detail->setFont(theme::scaled(theme::textFont(), 0.92));
    m_title->setBuddy(control);
    auto* const texts = new QVBoxLayout;
    texts->setContentsMargins(0, 0, 0, 0);
    texts->setSpacing(2);
    texts->addWidget(m_title);
    texts->addWidget(m_detail);
    if (place != Place::below) {
        auto* const line = new QHBoxLayout(this);
        line->setContentsMargins(rowMargin, rowPadding, rowMargin, rowPadding);
        line->setSpacing(place == Place::before ? 12 : 20);
        line->addLayout(texts, 1);
        line->insertWidget(place == Place::before ? 0 : 1, control, 0, Qt::AlignVCenter);
    } else {
        texts->setContentsMargins(rowMargin, rowPadding, rowMargin, rowPadding);
        texts->addSpacing(6);
        texts->addWidget(control);
        setLayout(texts);
    }
}

void SettingRow::setTexts(const QString& title, const QString& detail)
{
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
    m_detail->setText(detail);
    m_detail->setVisible(!detail.isEmpty());
    m_control->setAccessibleName(title);
    m_control->setAccessibleDescription(detail);
}

void SettingRow::mouseReleaseEvent(QMouseEvent* event)
{
    if (auto* const box = qobject_cast<ToggleSwitch*>(m_control); box != nullptr && box->isEnabled() &&
                                                                  event->button() == Qt::LeftButton &&
                                                                  rect().contains(event->pos()))
        box->click();
}

SettingsGroup::SettingsGroup(QWidget* parent)
    : QFrame(parent)
    , m_rows(new QVBoxLayout(this))
{
    m_rows->setContentsMargins(1, 1, 1, 1);
    m_rows->setSpacing(0);
}

void SettingsGroup::add(QWidget* row)
{
    m_rows->addWidget(row);
}

void SettingsGroup::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor line = theme::hairline(palette());
    painter.setPen(QPen(line, 1));
    painter.setBrush(theme::raised(palette()));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), groupRadius, groupRadius);
    bool first = true;
    for (int i = 0; i < m_rows->count(); ++i) {
        const QWidget* row = m_rows->itemAt(i)->widget();
        if (row == nullptr || row->isHidden())
            continue;
        if (!std::exchange(first, false))
            painter.drawLine(QPointF(rowMargin, row->y() + 0.5), QPointF(width() - 1, row->y() + 0.5));
    }
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return QObject::eventFilter(watched, event);
    // Ignored here, the event goes on to the parents, the page that scrolls among them.
    event->ignore();
    return true;
}

} // namespace nibbo
