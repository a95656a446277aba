#include "pet/view/PetWindow.h"

#include "pet/PetViewModel.h"
#include "pet/view/BubblePane.h"
#include "pet/view/PetPointerArea.h"
#include "pet/view/PetView.h"
#include "platform/StepTimer.h"
#include "platform/WindowPlacement.h"
#include "settings/SettingsStore.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QShowEvent>
#include <QStyleHints>

#include <algorithm>
#include <array>
#include <cmath>

namespace nibbo {
namespace {

/// After a stall the spring catches up with at most this many steps; it is at rest by then anyway.
constexpr int mostStepsAtOnce = 90;
/// Less opaque pixels than this are cut away where nothing blends them.
constexpr int cutAlpha = 128;

std::chrono::nanoseconds intervalOf(double stepsPerSecond)
{
    return std::chrono::nanoseconds(std::llround(1e9 / stepsPerSecond));
}

PetPointer::DoubleClick desktopDoubleClick()
{
    const QStyleHints& hints = *QGuiApplication::styleHints();
    return {Milliseconds(hints.mouseDoubleClickInterval()), double(hints.mouseDoubleClickDistance())};
}

QRegion opaqueRegion(const QImage& image)
{
    // Runs of a row, and rows alike in one rectangle: the banded order that a region is made of at no cost.
    std::vector<QRect> rectangles;
    std::vector<QRect> band;
    std::vector<QRect> row;
    const auto flush = [&] { rectangles.insert(rectangles.end(), band.begin(), band.end()); };
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        row.clear();
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(line[x]) < cutAlpha)
                continue;
            const int from = x;
            while (x < image.width() && qAlpha(line[x]) >= cutAlpha)
                ++x;
            row.emplace_back(from, y, x - from, 1);
        }
        const bool alike =
            std::equal(row.begin(), row.end(), band.begin(), band.end(), [](const QRect& a, const QRect& b) {
                return a.left() == b.left() && a.right() == b.right();
            });
        if (alike) {
            for (QRect& rect : band)
                rect.setBottom(y);
        } else {
            flush();
            band = row;
        }
    }
    flush();
    QRegion region;
    region.setRects(rectangles.data(), int(rectangles.size()));
    return region;
}

} // namespace

class PetWindowController::Window final : public QWidget
{
public:
    explicit Window(PetWindowController& controller)
        : m_controller(controller)
    {
        setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint |
                       Qt::WindowDoesNotAcceptFocus);
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_QuitOnClose, false);
        setFocusPolicy(Qt::NoFocus);
        setWindowTitle(QStringLiteral("Nibbo"));
        setAccessibleName(QStringLiteral("Nibbo"));
    }

protected:
    void showEvent(QShowEvent* event) override
    {
        QWidget::showEvent(event);
        if (!event->spontaneous())
            m_controller.m_placement->prepareToShow();
    }

    void closeEvent(QCloseEvent* event) override
    {
        // Only the pet's menu ends the pet.
        event->ignore();
    }

    bool event(QEvent* event) override
    {
        const bool handled = QWidget::event(event);
        const bool painted = event->type() == QEvent::UpdateRequest || event->type() == QEvent::Show;
        if (painted && !m_controller.m_placement->blendsTransparency())
            m_controller.m_cutTimer.start();
        return handled;
    }

private:
    PetWindowController& m_controller;
};

PetWindowController::PetWindowController(PetViewModel& model, SettingsStore& settings, const Clock& clock,
                                         Scheduler& scheduler, QString officialPictures,
                                         std::unique_ptr<BubblePane> bubble)
    : m_model(model)
    , m_settings(settings)
    , m_pictures(std::move(officialPictures))
    , m_motion(clock, *this)
    , m_pointer(clock, scheduler, *this, desktopDoubleClick())
    , m_window(std::make_unique<Window>(*this))
    , m_bubble(bubble.release())
    , m_followTimer(makeStepTimer([this](int count) {
        for (int i = 0; i < std::min(count, mostStepsAtOnce) && m_motion.isFollowing(); ++i)
            m_motion.stepFollow();
        runTimers();
        place();
    }))
    , m_animationTimer(makeStepTimer([this](int) {
        m_motion.stepAnimation();
        runTimers();
        place();
    }))
{
    m_screensTimer.setSingleShot(true);
    m_screensTimer.setInterval(0);
    m_cutTimer.setSingleShot(true);
    m_cutTimer.setInterval(0);
    connect(&m_screensTimer, &QTimer::timeout, this, &PetWindowController::onScreensChanged);
    connect(&m_cutTimer, &QTimer::timeout, this, &PetWindowController::updateCut);

    const Settings& current = settings.current();
    m_pictures.setLook(PetLook::of(current));
    m_motion.setEdgeSnap(current.edgeSnap);
    m_view = new PetView(model, m_pictures, clock, m_window.get());
    m_view->setAnimationSpeed(current.animationSpeed);
    m_area = new PetPointerArea(m_pointer, m_window.get());
    if (m_bubble) {
        m_bubble->setParent(m_window.get());
        connect(m_bubble, &BubblePane::preferredSizeChanged, this, [this] {
            layOut();
            place();
        });
        connect(m_bubble, &BubblePane::clickRegionChanged, this, &PetWindowController::applyInputRegion);
    }
    m_placement = makeWindowPlacement(*m_window);
    m_placement->setAbove(current.alwaysOnTop);
    connect(m_placement.get(), &WindowPlacement::blendingChanged, &m_cutTimer, qOverload<>(&QTimer::start));
    connect(m_placement.get(), &WindowPlacement::blendingChanged, this,
            &PetWindowController::blendingChanged);
    connect(&settings, &SettingsStore::changed, this, &PetWindowController::onSettingsChanged);

    connect(qGuiApp, &QGuiApplication::screenAdded, this, &PetWindowController::watchScreens);
    connect(qGuiApp, &QGuiApplication::screenRemoved, &m_screensTimer, qOverload<>(&QTimer::start));
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &m_screensTimer, qOverload<>(&QTimer::start));
    watchScreens();
    m_screensTimer.stop();
    onScreensChanged();
}

PetWindowController::~PetWindowController()
{
    // The child widgets and the placement look at members of this object.
    m_pointer.cancel();
    m_placement.reset();
    m_window.reset();
}

QWidget& PetWindowController::window()
{
    return *m_window;
}

QRect PetWindowController::petSquare() const
{
    return m_layout.pet.translated(panelDownwards() + m_windowOffset);
}

bool PetWindowController::blendsTransparency() const
{
    return m_placement->blendsTransparency();
}

void PetWindowController::showPet()
{
    std::optional<ScreenPoint> saved;
    const UserDefaults& defaults = m_settings.defaults();
    if (const auto x = defaults.number(QString::fromLatin1(originXKey)))
        saved = ScreenPoint{*x, defaults.number(QString::fromLatin1(originYKey)).value_or(0)};
    m_motion.restore(saved);
    layOut();
    place();
    m_window->show();
}

void PetWindowController::resetPosition()
{
    adoptWindowPosition();
    m_motion.resetPosition();
    runTimers();
    place();
}

void PetWindowController::setReducedMotion(bool reduced)
{
    m_view->setReducedMotion(reduced);
}

void PetWindowController::panelMoved(ScreenPoint)
{
    // Several steps may fall into one wake-up; the window moves once, after them.
}

void PetWindowController::bumped(BumpDirection direction)
{
    m_model.bump(direction);
}

void PetWindowController::facingChanged(double facing)
{
    m_model.setFacing(facing);
}

void PetWindowController::positionToSave(ScreenPoint origin)
{
    const std::array<UserDefaults::Change, 2> changes = {
        {{QString::fromLatin1(originXKey), origin.x}, {QString::fromLatin1(originYKey), origin.y}}};
    m_settings.defaults().write(changes);
}

void PetWindowController::dragBegan()
{
    adoptWindowPosition();
    m_motion.beginDrag(m_space.fromQt(m_area->lastPosition()));
    m_followTimer->start(intervalOf(PetMotion::followStepsPerSecond));
    m_model.beginDragging();
}

void PetWindowController::dragMoved()
{
    m_motion.updateDrag(m_space.fromQt(m_area->lastPosition()));
}

void PetWindowController::dragEnded()
{
    m_motion.endDrag();
    m_model.endDragging();
}

void PetWindowController::clicked()
{
    switch (m_settings.current().singleClickBehavior) {
    case SingleClickBehavior::toggleBubble:
    case SingleClickBehavior::quickPanel:
        m_model.toggleBubble();
        break;
    case SingleClickBehavior::none:
        break;
    }
}

void PetWindowController::doubleClicked()
{
    switch (m_settings.current().doubleClickBehavior) {
    case DoubleClickBehavior::petReaction:
        m_model.petReaction();
        break;
    case DoubleClickBehavior::openSettings:
        m_model.requestSettings();
        break;
    case DoubleClickBehavior::none:
        break;
    }
}

void PetWindowController::hovered()
{
    m_model.hover();
}

void PetWindowController::menuAsked()
{
    Q_EMIT menuRequested(m_area->lastPosition().toPoint());
}

void PetWindowController::onSettingsChanged(const Settings& before)
{
    const Settings& now = m_settings.current();
    if (now.alwaysOnTop != before.alwaysOnTop)
        m_placement->setAbove(now.alwaysOnTop);
    if (now.pauseNibbo != before.pauseNibbo)
        onPause(now.pauseNibbo);
    m_motion.setEdgeSnap(now.edgeSnap);
    if (now.animationSpeed != before.animationSpeed)
        m_view->setAnimationSpeed(now.animationSpeed);
    if (PetLook::of(now) != PetLook::of(before)) {
        m_pictures.setLook(PetLook::of(now));
        m_view->picturesChanged();
    }
    if (now.petSizeScale != before.petSizeScale) {
        layOut();
        place();
    }
}

void PetWindowController::onPause(bool paused)
{
    const AppLanguage language = m_settings.language();
    if (paused)
        m_model.showNotice(PetState::sleeping, text(language, u"Paused. Zzz...", u"已暂停。Zzz..."));
    else
        m_model.showNotice(PetState::idle, text(language, u"Nibbo is back.", u"Nibbo 回来了。"));
}

void PetWindowController::watchScreens()
{
    for (QScreen* screen : QGuiApplication::screens()) {
        screen->disconnect(&m_screensTimer);
        connect(screen, &QScreen::geometryChanged, &m_screensTimer, qOverload<>(&QTimer::start));
        connect(screen, &QScreen::availableGeometryChanged, &m_screensTimer, qOverload<>(&QTimer::start));
        connect(screen, &QScreen::logicalDotsPerInchChanged, &m_screensTimer, qOverload<>(&QTimer::start));
    }
    m_screensTimer.start();
}

void PetWindowController::onScreensChanged()
{
    m_space = DesktopSpace();
    m_motion.setScreens(m_space.screens());
    if (!m_window->isVisible())
        return;
    layOut();
    m_placed.reset();
    place();
}

void PetWindowController::adoptWindowPosition()
{
    if (m_motion.isFollowing() || m_motion.isAnimating() || !m_window->isVisible())
        return;
    const ScreenPoint at = m_space.fromQt(m_window->pos());
    const QPoint panel = m_space.downwards(at, 0) - m_windowOffset;
    // The window stands on whole pixels, the model between them.
    if ((panel - panelDownwards()).manhattanLength() > 2)
        m_motion.panelMovedByOthers(m_space.upwards(panel, PetMotion::panelHeight));
}

void PetWindowController::runTimers()
{
    const bool wasResting = !m_followTimer->isActive() && !m_animationTimer->isActive();
    if (!m_motion.isFollowing())
        m_followTimer->stop();
    if (!m_motion.isAnimating())
        m_animationTimer->stop();
    else if (!m_animationTimer->isActive())
        m_animationTimer->start(intervalOf(PetMotion::animationStepsPerSecond));
    if (!wasResting && !m_motion.isFollowing() && !m_motion.isAnimating())
        layOut();
}

QPoint PetWindowController::panelDownwards() const
{
    return m_space.downwards(m_motion.origin(), PetMotion::panelHeight);
}

void PetWindowController::place()
{
    const QPoint at = m_space.physical(panelDownwards() + m_windowOffset);
    if (at == m_placed)
        return;
    m_placed = at;
    m_placement->moveTo(at);
}

void PetWindowController::layOut()
{
    const QPoint panel = panelDownwards();
    const int side = petSide(m_settings.current().petSizeScale);
    const QRect standing = layOutPet(panel, side, {}, std::nullopt).window;
    const PetLayout layout = layOutPet(panel, side, m_bubble ? m_bubble->preferredSize() : QSize(),
                                       m_space.freeAreaAround(standing));
    m_windowOffset = layout.window.topLeft() - panel;
    if (m_window->size() != layout.window.size())
        m_window->setFixedSize(layout.window.size());
    m_layout = layout;
    m_view->setSide(side);
    m_view->setGeometry(layout.pet.marginsAdded(spriteMargins(side)));
    m_area->setGeometry(layout.pet);
    if (m_bubble) {
        m_bubble->setTail(layout.bubbleBelow ? TailSide::top : TailSide::bottom, layout.tip);
        m_bubble->setGeometry(layout.bubble);
        m_bubble->setVisible(!layout.bubble.isEmpty());
    }
    if (m_bubble && layout.bubbleOverPet)
        m_bubble->raise();
    else
        m_area->raise();
    applyInputRegion();
}

void PetWindowController::applyInputRegion()
{
    QRegion region(m_layout.pet);
    if (m_bubble && !m_layout.bubble.isEmpty())
        region += (m_bubble->clickRegion() & QRect(QPoint(0, 0), m_layout.bubble.size()))
                      .translated(m_layout.bubble.topLeft());
    m_placement->setInputRegion(region);
}

void PetWindowController::updateCut()
{
    if (!m_window->isVisible())
        return;
    if (m_placement->blendsTransparency()) {
        m_placement->cutTo({});
        return;
    }
    QImage image(m_window->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    m_window->render(&image, {}, {}, QWidget::DrawChildren);
    QRegion region = opaqueRegion(image);
    // A window of no extent would be no window; the pet's middle is always part of it.
    if (region.isEmpty())
        region = QRect(m_layout.pet.center(), QSize(1, 1));
    m_placement->cutTo(region);
}

} // namespace nibbo
