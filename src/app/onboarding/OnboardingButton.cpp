#include "app/onboarding/OnboardingButton.h"

#include "settings/view/Theme.h"

#include <QFocusEvent>
#include <QPainter>
#include <QTimerEvent>

// Outside any namespace, as the macro asks for.
static void initialiseResources()
{
    Q_INIT_RESOURCE(OnboardingIcons);
}

namespace nibbo {
namespace {

constexpr int ringIntervalMs = 40;
constexpr int ringStepDegrees = 18;
constexpr double cardRadius = 12;

} // namespace

struct OnboardingButton::Colours
{
    QColor fill;
    QColor outline;
    QColor text;
    QColor symbol;
};

QString onboardingSymbol(const QString& name)
{
    initialiseResources();
    return QStringLiteral(":/icons/onboarding/%1.svg").arg(name);
}

OnboardingButton::OnboardingButton(Kind kind, QWidget* parent)
    : QPushButton(parent)
    , m_kind(kind)
{
    setAutoDefault(true);
    setCursor(Qt::PointingHandCursor);
    setCheckable(kind == Kind::card);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(kind == Kind::card ? QSizePolicy::Expanding : QSizePolicy::Minimum, QSizePolicy::Fixed);
    if (kind == Kind::primary)
        setFont(theme::heading(1.0));
}

void OnboardingButton::setSymbol(const QString& file)
{
    m_symbol = file;
    updateGeometry();
    update();
}

void OnboardingButton::setBusy(bool busy)
{
    m_busy = busy;
    setAttribute(Qt::WA_TransparentForMouseEvents, busy);
    runRing();
    update();
}

int OnboardingButton::symbolSide() const
{
    return m_kind == Kind::card ? fontMetrics().height() + 10 : fontMetrics().height();
}

QSize OnboardingButton::sizeHint() const
{
    const int height = fontMetrics().height();
    const int width = fontMetrics().horizontalAdvance(text());
    const int symbol = m_symbol.isEmpty() ? 0 : symbolSide();
    switch (m_kind) {
    case Kind::card:
        return {width + 28, symbol + height + 30};
    case Kind::quiet:
        return {width + 24, height + 18};
    case Kind::primary:
    case Kind::ordinary:
        break;
    }
    const int words = width + (symbol > 0 ? symbol + 8 : 0) + 36;
    return {m_kind == Kind::primary ? qMax(words, 8 * height) : words, height + 18};
}

OnboardingButton::Colours OnboardingButton::colours() const
{
    const QPalette& from = palette();
    const QColor window = from.color(QPalette::Window);
    const QColor words = from.color(QPalette::WindowText);
    const QColor accent = from.color(QPalette::Active, QPalette::Highlight);
    const bool near = underMouse() && isEnabled();
    Colours colours;
    switch (m_kind) {
    case Kind::primary:
        colours = {theme::mixed(accent, Qt::black,
                                isDown() ? 0.16
                                : near   ? 0.07
                                         : 0.0),
                   Qt::transparent, Qt::white, Qt::white};
        break;
    case Kind::quiet:
        colours = {near || isDown() ? theme::mixed(window, words, isDown() ? 0.12 : 0.06)
                                    : QColor(Qt::transparent),
                   Qt::transparent, theme::mixed(words, window, 0.2), words};
        break;
    case Kind::card:
    case Kind::ordinary: {
        const QColor raised = theme::raised(from);
        const QColor symbol = theme::isDark(from) ? theme::mixed(accent, Qt::white, 0.35) : accent;
        colours = {theme::mixed(raised, words,
                                isDown() ? 0.1
                                : near   ? 0.05
                                         : 0.0),
                   theme::mixed(window, words, 0.2), words, symbol};
        if (isChecked()) {
            colours.fill = theme::mixed(raised, accent, 0.1);
            colours.outline = accent;
        }
        break;
    }
    }
    if (!isEnabled()) {
        for (QColor* each : {&colours.fill, &colours.outline, &colours.text, &colours.symbol}) {
            if (each->alpha() > 0)
                each->setAlphaF(0.45F);
        }
    }
    return colours;
}

void OnboardingButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Colours paint = colours();
    const QRectF body = QRectF(rect()).adjusted(3, 3, -3, -3);
    const double radius = m_kind == Kind::card ? cardRadius : body.height() / 2;
    painter.setPen(paint.outline.alpha() == 0 ? QPen(Qt::NoPen) : QPen(paint.outline, isChecked() ? 2 : 1));
    painter.setBrush(paint.fill);
    painter.drawRoundedRect(body, radius, radius);

    const double side = m_symbol.isEmpty() && !m_busy ? 0 : symbolSide();
    painter.setFont(font());
    if (m_kind == Kind::card) {
        const double gap = 8;
        const double top = body.center().y() - (side + gap + fontMetrics().height()) / 2;
        drawSymbol(painter, QRectF(body.center().x() - side / 2, top, side, side), paint.symbol);
        painter.setPen(paint.text);
        painter.drawText(QRectF(body.left(), top + side + gap, body.width(), fontMetrics().height()),
                         Qt::AlignCenter, text());
    } else {
        const double words = fontMetrics().horizontalAdvance(text());
        const double gap = side > 0 ? 8 : 0;
        const double left = body.center().x() - (side + gap + words) / 2;
        drawSymbol(painter, QRectF(left, body.center().y() - side / 2, side, side), paint.symbol);
        painter.setPen(paint.text);
        painter.drawText(QRectF(left + side + gap, body.top(), words + 2, body.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, text());
    }
    if (hasFocus() && m_showsFocus) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::WindowText), 1.4));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius + 2, radius + 2);
    }
}

void OnboardingButton::drawSymbol(QPainter& painter, const QRectF& square, const QColor& colour) const
{
    if (m_busy) {
        painter.setBrush(Qt::NoBrush);
        QPen pen(colour, 2);
        pen.setCapStyle(Qt::RoundCap);
        painter.setPen(pen);
        painter.drawArc(square.adjusted(2, 2, -2, -2), -m_ringStep * ringStepDegrees * 16, 270 * 16);
    } else if (!m_symbol.isEmpty()) {
        painter.drawPixmap(square.topLeft(),
                           theme::symbol(m_symbol, qRound(square.width()), devicePixelRatioF(), colour));
    }
}

void OnboardingButton::runRing()
{
    if (m_busy && isVisible() && !m_reducedMotion)
        m_ringTimer.start(ringIntervalMs, this);
    else
        m_ringTimer.stop();
}

void OnboardingButton::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_ringTimer.timerId())
        return QPushButton::timerEvent(event);
    ++m_ringStep;
    update();
}

void OnboardingButton::showEvent(QShowEvent* event)
{
    QPushButton::showEvent(event);
    runRing();
}

void OnboardingButton::focusInEvent(QFocusEvent* event)
{
    m_showsFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QPushButton::focusInEvent(event);
}

void OnboardingButton::hideEvent(QHideEvent* event)
{
    QPushButton::hideEvent(event);
    runRing();
}

} // namespace nibbo
