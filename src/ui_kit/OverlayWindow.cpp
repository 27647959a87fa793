#include "ui_kit/OverlayWindow.h"

#include "ui_kit/DesktopCoordinates.h"
#include "ui_kit/WindowPlacement.h"
#include "ui_kit/X11WindowManagement.h"

#include <QExposeEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <utility>

namespace keldra {
namespace {

using namespace std::chrono_literals;

/// Until whoever holds the keyboard, such as a menu that is closing, lets go of it.
constexpr Duration keyboardRetryInterval = 30ms;

/// So many of Qt's units are whole pixels at every factor that is a multiple of a quarter; what is painted anew never
/// ends within a pixel.
constexpr int wholePixels = 4;

QRect alignedOutwards(const QRectF& rect) {
    const auto down = [](double value) { return int(std::floor(value / wholePixels)) * wholePixels; };
    const auto up = [](double value) { return int(std::ceil(value / wholePixels)) * wholePixels; };
    const QPoint corner(down(rect.left()), down(rect.top()));
    return {corner, QSize(up(rect.left() + rect.width()) - corner.x(), up(rect.top() + rect.height()) - corner.y())};
}

QRegion alignedOutwards(const QRegion& region) {
    QRegion aligned;
    for (const QRect& rect : region)
        aligned += alignedOutwards(QRectF(rect));
    return aligned;
}

/// The pixels whose centres a path of view coordinates holds.
QRegion pixelsOf(const QPainterPath& path, double factor) {
    QRegion pixels;
    for (const QPolygonF& polygon : path.toFillPolygons(QTransform::fromScale(factor, factor)))
        pixels += QRegion(polygon.toPolygon(), path.fillRule());
    return pixels;
}

} // namespace

OverlayWindow::OverlayWindow(const OverlayOptions& options, OverlayView& view, bool isTranslucent,
                             std::shared_ptr<OwnWindows> ownWindows, Scheduler& scheduler)
    : m_options(options)
    , m_space{options.frame}
    , m_view(view)
    , m_isTranslucent(isTranslucent)
    , m_scheduler(scheduler)
    , m_registration(*this, std::move(ownWindows), options.identifier, SharingType::readOnly) {
    QSurfaceFormat surface;
    surface.setAlphaBufferSize(isTranslucent ? 8 : 0);
    setFormat(surface);
    setTitle(options.identifier);
    setFlags(flagsFor(options));
    if (options.level == OverlayOptions::Level::belowPanels)
        manageAsPanel(*this);
    // The name by which Qt tells the window manager to leave the keyboard where it is.
    setProperty("_q_showWithoutActivating", true);
    watchDesktop();
}

OverlayWindow::~OverlayWindow() {
    m_keyboardRetry.cancel();
    if (m_options.takesKeyboard && isVisible())
        setKeyboardGrabEnabled(false);
    // Events of the last moments must not reach a view that may be gone before the window is.
    hide();
}

Qt::WindowFlags OverlayWindow::flagsFor(const OverlayOptions& options) const {
    Qt::WindowFlags flags =
        Qt::Window | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint | Qt::WindowStaysOnTopHint;
    flags |=
        options.level == OverlayOptions::Level::aboveAll ? Qt::BypassWindowManagerHint : Qt::WindowDoesNotAcceptFocus;
    if (options.letsClicksThrough)
        flags |= Qt::WindowTransparentForInput;
    return flags;
}

void OverlayWindow::watchDesktop() {
    // In a later turn: whoever hears it may destroy this window.
    const auto tell = [this] { m_view.desktopChanged(); };
    const auto watch = [this, tell](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, tell, Qt::QueuedConnection);
    };
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, watch);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, tell, Qt::QueuedConnection);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, tell, Qt::QueuedConnection);
}

void OverlayWindow::orderFront() {
    if (isVisible())
        return raise();
    place();
    show();
    if (m_options.level == OverlayOptions::Level::aboveAll)
        raise();
    if (m_options.takesKeyboard)
        takeKeyboard();
}

void OverlayWindow::sendBelowPanels() {
    // To the back of those that the window manager keeps above others, which the panels are among. Some (xfwm4) do not
    // get the back quite right, so the panels also come to the front; and not what they hold to be there already, so
    // this window goes before.
    raise();
    lower();
    raisePanelsExcept(*this);
    // Qt has told it a size of whole units of its own.
    placeInRoot(*this, rootRect());
}

/// A window manager takes one that fills a monitor, or the whole screen, exactly for a full-screen program's, and may
/// keep it above all others.
QRect OverlayWindow::rootRect() const {
    const QRect rect = DesktopCoordinates::current().toRoot(m_options.frame);
    std::vector<QRect> whole = rootRectsOfMonitors();
    whole.push_back(rectOfRoot());
    const bool isOne = std::find(whole.begin(), whole.end(), rect) != whole.end();
    return isOne && m_options.level == OverlayOptions::Level::belowPanels ? rect.adjusted(0, 0, 1, 1) : rect;
}

void OverlayWindow::place() {
    const DesktopCoordinates coordinates = DesktopCoordinates::current();
    const QRect root = rootRect();
    setGeometry(coordinates.toQt(m_options.frame));
    keepSize(*this);
    create();
    placeInRoot(*this, root);
    if (m_isTranslucent)
        return;
    if (isShaped()) {
        applyShape();
    } else {
        m_ground = takeScreenshot(root);
        m_ground.setDevicePixelRatio(coordinates.factor());
    }
}

void OverlayWindow::takeKeyboard() {
    qGuiApp->installEventFilter(this);
    if (!setKeyboardGrabEnabled(true))
        m_keyboardRetry = m_scheduler.after(keyboardRetryInterval, [this] { takeKeyboard(); });
}

void OverlayWindow::applyShape() {
    const QRegion shape = pixelsOf(m_view.shape(m_space), devicePixelRatio());
    if (shape != m_shape || m_shape.isEmpty())
        cutToShape(*this, shape);
    m_shape = shape;
}

void OverlayWindow::repaint(const QRectF& part) {
    if (isShaped() && isVisible())
        applyShape();
    update(alignedOutwards(m_space.toView(part)));
}

void OverlayWindow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRegion region = alignedOutwards(event->region());
    painter.setClipRegion(region);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (const QRect& rect : region)
        painter.fillRect(rect, m_isTranslucent ? Qt::transparent : Qt::black);
    if (!m_ground.isNull())
        painter.drawImage(QPointF(), m_ground);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setRenderHint(QPainter::Antialiasing);
    m_view.paint(painter, m_space);
}

void OverlayWindow::exposeEvent(QExposeEvent* event) {
    // Before, a window manager that is to hear of it did not yet manage the window.
    if (!std::exchange(m_wasExposed, true)) {
        if (m_options.letsClicksThrough)
            takeClicksOnlyIn(*this, {});
        if (m_options.level == OverlayOptions::Level::belowPanels && hasWindowManager())
            sendBelowPanels();
    }
    QRasterWindow::exposeEvent(event);
}

QPointF OverlayWindow::pointOf(const QMouseEvent& event) const {
    return m_space.toPoints(event.position());
}

void OverlayWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_view.mousePressed(pointOf(*event));
}

void OverlayWindow::mouseMoveEvent(QMouseEvent* event) {
    m_view.mouseMoved(pointOf(*event));
}

void OverlayWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_view.mouseReleased(pointOf(*event));
}

/// Qt gives keys that this window holds to another one of ours that got the focus since.
bool OverlayWindow::eventFilter(QObject* receiver, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !receiver->isWindowType() || receiver == this)
        return QRasterWindow::eventFilter(receiver, event);
    keyPressEvent(static_cast<QKeyEvent*>(event));
    return true;
}

void OverlayWindow::keyPressEvent(QKeyEvent* event) {
    m_view.keyPressed(event->key());
}

DesktopOverlays::DesktopOverlays(std::shared_ptr<OwnWindows> ownWindows, Scheduler& scheduler)
    : m_ownWindows(std::move(ownWindows)), m_scheduler(scheduler) {}

bool DesktopOverlays::areTranslucent() const {
    return hasCompositingManager();
}

bool DesktopOverlays::canCover() const {
    return canPlaceWindows();
}

std::unique_ptr<Overlay> DesktopOverlays::make(const OverlayOptions& options, OverlayView& view) {
    return std::make_unique<OverlayWindow>(options, view, areTranslucent(), m_ownWindows, m_scheduler);
}

} // namespace keldra
