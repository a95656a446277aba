#include "app/onboarding/OnboardingView.h"

#include "app/onboarding/AgentIntegrationPage.h"
#include "app/onboarding/OnboardingButton.h"
#include "app/onboarding/PetSelectionPage.h"
#include "app/onboarding/WelcomePage.h"
#include "settings/view/Theme.h"

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <array>

namespace nibbo {
namespace {

constexpr QSize contentSize(540, 480);
constexpr int transitionMs = 260;
constexpr int transitionPixels = 44;

constexpr std::array<TextPair, 3> forwardTitles{{
    {u"Get Started", u"开始使用"},
    {u"Continue", u"继续"},
    {u"Done", u"完成"},
}};

/// Only what the page itself paints, without the window behind it.
QPixmap pictureOf(QWidget& page)
{
    const double ratio = page.devicePixelRatioF();
    QPixmap picture(page.size() * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    page.render(&picture, {}, {}, QWidget::DrawChildren);
    return picture;
}

} // namespace

/// How far the user has come.
class OnboardingView::Dots final : public QWidget
{
public:
    explicit Dots(int count)
        : m_count(count)
    {
        setFixedSize(count * step + longer, side + 4);
    }

    void setCurrent(int current)
    {
        m_current = current;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        double left = (step - side) / 2.0;
        for (int i = 0; i < m_count; ++i) {
            const double width = i == m_current ? side + longer : side;
            painter.setBrush(i == m_current ? palette().color(QPalette::Active, QPalette::Highlight)
                                            : theme::mixed(palette().color(QPalette::Window),
                                                           palette().color(QPalette::WindowText), 0.26));
            painter.drawRoundedRect(QRectF(left, 2, width, side), side / 2.0, side / 2.0);
            left += width + step - side;
        }
    }

private:
    static constexpr int side = 8;
    static constexpr int step = 16;
    static constexpr int longer = 12;
    int m_count;
    int m_current = 0;
};

/// Lies over the pages while one gives way to the next, as two pictures.
class OnboardingView::Transition final : public QWidget
{
public:
    explicit Transition(QWidget* parent)
        : QWidget(parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
        m_animation.setDuration(transitionMs);
        m_animation.setEasingCurve(QEasingCurve::OutCubic);
        m_animation.setStartValue(0.0);
        m_animation.setEndValue(1.0);
        connect(&m_animation, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
        connect(&m_animation, &QVariantAnimation::finished, this, &Transition::stop);
    }

    void run(QPixmap from, QPixmap to, bool onward)
    {
        m_from = std::move(from);
        m_to = std::move(to);
        m_onward = onward;
        raise();
        show();
        m_animation.start();
    }

    void stop()
    {
        m_animation.stop();
        hide();
        m_from = {};
        m_to = {};
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), palette().window());
        const double done = m_animation.currentValue().toDouble();
        const double side = m_onward ? transitionPixels : -transitionPixels;
        painter.setOpacity(qMax(0.0, 1 - done * 2));
        painter.drawPixmap(QPointF(-side * done, 0), m_from);
        painter.setOpacity(done);
        painter.drawPixmap(QPointF(side * (1 - done), 0), m_to);
    }

private:
    QVariantAnimation m_animation;
    QPixmap m_from;
    QPixmap m_to;
    bool m_onward = true;
};

OnboardingView::OnboardingView(const OnboardingPage::Context& context)
    : m_services(context.services)
    , m_stack(new QStackedWidget)
    , m_pages{new WelcomePage(context), new PetSelectionPage(context), new AgentIntegrationPage(context)}
    , m_transition(new Transition(this))
    , m_back(new OnboardingButton(OnboardingButton::Kind::quiet))
    , m_dots(new Dots(static_cast<int>(m_pages.size())))
    , m_forward(new OnboardingButton(OnboardingButton::Kind::primary))
    , m_shownLanguage(context.services.settings.language())
{
    setObjectName(QStringLiteral("onboarding"));
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    m_back->setObjectName(QStringLiteral("back"));
    m_dots->setObjectName(QStringLiteral("progress"));
    m_forward->setObjectName(QStringLiteral("forward"));

    auto* const bar = new QGridLayout;
    bar->setContentsMargins(24, 8, 24, 20);
    bar->setColumnStretch(0, 1);
    bar->setColumnStretch(2, 1);
    bar->addWidget(m_back, 0, 0, Qt::AlignLeft);
    bar->addWidget(m_dots, 0, 1, Qt::AlignCenter);
    bar->addWidget(m_forward, 0, 2, Qt::AlignRight);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_stack, 1);
    column->addLayout(bar);
    for (OnboardingPage* each : m_pages) {
        m_stack->addWidget(each);
        connect(each, &OnboardingPage::busyChanged, this, [this](bool busy) {
            m_busyPages += busy ? 1 : -1;
            refreshBar();
        });
    }
    connect(m_back, &OnboardingButton::clicked, this, &OnboardingView::back);
    connect(m_forward, &OnboardingButton::clicked, this, &OnboardingView::forward);
    connect(&m_services.settings, &SettingsStore::changed, this, [this](const Settings& before) {
        if (before.themeColor != m_services.settings.current().themeColor)
            adoptLook();
        if (m_services.settings.language() != m_shownLanguage)
            retranslate();
    });
    adoptLook();
    retranslate();
    m_forward->setFocus();
}

int OnboardingView::page() const
{
    return m_stack->currentIndex();
}

void OnboardingView::forward()
{
    if (m_busyPages > 0)
        return;
    if (page() + 1 < m_stack->count())
        goTo(page() + 1);
    else
        Q_EMIT finished();
}

void OnboardingView::back()
{
    if (m_busyPages == 0 && page() > 0)
        goTo(page() - 1);
}

void OnboardingView::goTo(int page)
{
    const bool onward = page > this->page();
    m_transition->stop();
    const bool moves = isVisible() && !reducesMotion(m_services, *this);
    const QPixmap from = moves ? pictureOf(*m_stack) : QPixmap();
    m_stack->setCurrentIndex(page);
    refreshBar();
    m_forward->setReducedMotion(!moves);
    m_forward->setFocus();
    if (moves) {
        m_transition->setGeometry(m_stack->geometry());
        m_transition->run(from, pictureOf(*m_stack), onward);
    }
}

void OnboardingView::refreshBar()
{
    const AppLanguage language = m_services.settings.language();
    m_back->setVisible(page() > 0);
    m_back->setText(text(language, u"Back", u"上一步"));
    m_back->setAccessibleName(m_back->text());
    m_forward->setBusy(m_busyPages > 0);
    m_forward->setText(forwardTitles[static_cast<std::size_t>(page())].in(language));
    m_forward->setAccessibleName(m_forward->text());
    m_dots->setCurrent(page());
    m_dots->setAccessibleName(
        text(language, u"Page %1 of %2", u"第 %1 页，共 %2 页").arg(page() + 1).arg(m_stack->count()));
}

void OnboardingView::retranslate()
{
    m_shownLanguage = m_services.settings.language();
    setWindowTitle(text(m_shownLanguage, u"Welcome to Nibbo", u"欢迎使用 Nibbo"));
    for (OnboardingPage* each : m_pages)
        each->retranslate();
    refreshBar();
    fit();
}

void OnboardingView::adoptLook()
{
    setFont(theme::textFont());
    // A little lighter and warmer than the desktop's other windows: this one is a welcome.
    const QPalette desktop = QApplication::palette();
    QPalette look = theme::palette(desktop, m_services.settings.current().themeColor);
    const QColor window = desktop.color(QPalette::Window);
    const QColor ground =
        theme::isDark(desktop) ? window : theme::mixed(window, desktop.color(QPalette::Base), 0.7);
    look.setColor(QPalette::Window, theme::mixed(ground, look.color(QPalette::Highlight), 0.02));
    setPalette(look);
}

void OnboardingView::fit()
{
    // Larger fonts get a larger window rather than cut texts.
    layout()->activate();
    const QSize needed = layout()->minimumSize();
    const int width = qMax(contentSize.width(), needed.width());
    int height = qMax(contentSize.height(), needed.height());
    for (const OnboardingPage* each : m_pages)
        height = qMax(height, each->layout()->totalHeightForWidth(width) + needed.height() -
                                  m_stack->minimumSizeHint().height());
    setFixedSize(width, height);
}

void OnboardingView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && layout() != nullptr)
        fit();
    else if (event->type() == QEvent::ApplicationPaletteChange)
        adoptLook();
}

void OnboardingView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        forward();
    else if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace nibbo
