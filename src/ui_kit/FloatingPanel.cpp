#include "ui_kit/FloatingPanel.h"

#include "base/Log.h"
#include "ui_kit/DesktopCoordinates.h"
#include "ui_kit/PanelShape.h"
#include "ui_kit/WindowPlacement.h"
#include "ui_kit/X11WindowManagement.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickView>
#include <QStyleHints>
#include <QtMath>

#include <algorithm>
#include <utility>

namespace keldra {

namespace {

/// Between a panel and what stands above it in the same window.
constexpr int companionGap = 8;

} // namespace

/// The window itself: what no control of the view takes moves it.
class FloatingPanel::View final : public QQuickView {
public:
    View(QQmlEngine& engine, bool isMovable, std::function<void()> exposed, std::function<void()> resized)
        : QQuickView(&engine, nullptr)
        , m_isMovable(isMovable)
        , m_exposed(std::move(exposed))
        , m_resized(std::move(resized)) {
        setResizeMode(QQuickView::SizeRootObjectToView);
        QSurfaceFormat alpha = format();
        alpha.setAlphaBufferSize(8);
        setFormat(alpha);
        setColor(Qt::transparent);
    }

protected:
    bool event(QEvent* event) override {
        // A panel leaves the screen when the model says so; whoever closes it means Escape.
        if (event->type() == QEvent::Close) {
            event->ignore();
            QCoreApplication::postEvent(this, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
            return true;
        }
        return QQuickView::event(event);
    }
    void exposeEvent(QExposeEvent* event) override {
        QQuickView::exposeEvent(event);
        if (isExposed())
            m_exposed();
    }
    void resizeEvent(QResizeEvent* event) override {
        QQuickView::resizeEvent(event);
        m_resized();
    }
    void mousePressEvent(QMouseEvent* event) override {
        QQuickView::mousePressEvent(event);
        m_press.reset();
        if (m_isMovable && event->button() == Qt::LeftButton)
            m_press = Press{event->globalPosition().toPoint(), position()};
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        QQuickView::mouseMoveEvent(event);
        // Only now it is known whether a control has taken the press.
        if (!m_press || !(event->buttons() & Qt::LeftButton) || mouseGrabberItem() != nullptr)
            return;
        const QPoint offset = event->globalPosition().toPoint() - m_press->pointer;
        if (!m_isMoving && offset.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
            return;
        // The window manager moves it where there is one that can; it then gets the rest of the drag.
        if (!m_isMoving && startSystemMove()) {
            m_press.reset();
            return;
        }
        m_isMoving = true;
        setPosition(m_press->window + offset);
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        QQuickView::mouseReleaseEvent(event);
        m_press.reset();
        m_isMoving = false;
    }

private:
    struct Press {
        QPoint pointer;
        QPoint window;
    };
    const bool m_isMovable;
    const std::function<void()> m_exposed;
    const std::function<void()> m_resized;
    std::optional<Press> m_press;
    bool m_isMoving = false;
};

FloatingPanel::FloatingPanel(PanelConfiguration configuration, UiKit& kit)
    : m_configuration(std::move(configuration))
    , m_kit(kit)
    , m_view(std::make_unique<View>(
          kit.engine(), m_configuration.isMovable, [this] { exposed(); }, [this] { placeRoot(); })) {
    Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
    if (m_configuration.ignoresMouse)
        flags |= Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus;
    m_view->setFlags(flags);
    m_view->setTitle(m_configuration.title);
    manageAsPanel(*m_view);
    m_registration = std::make_unique<RegisteredWindow>(*m_view, kit.ownWindows(), m_configuration.identifier,
                                                        SharingType::readOnly);
    connect(m_view.get(), &QWindow::xChanged, this, &FloatingPanel::noteMove);
    connect(m_view.get(), &QWindow::yChanged, this, &FloatingPanel::noteMove);
    // Points count from the primary screen.
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &FloatingPanel::noteMove);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &FloatingPanel::noteMove);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &FloatingPanel::noteMove);
    connect(&kit.theme(), &Theme::isTranslucentChanged, this, &FloatingPanel::applyShape);
}

FloatingPanel::~FloatingPanel() = default;

void FloatingPanel::setOrigin(QPointF origin) {
    place({origin, m_frame.size()});
}

void FloatingPanel::setContentSize(QSizeF size) {
    place({m_frame.topLeft(), size});
}

void FloatingPanel::place(const QRectF& frame) {
    if (frame == m_frame)
        return;
    const bool hasMoved = frame.topLeft() != m_frame.topLeft();
    m_frame = frame;
    m_isPlacing = true;
    if (!frame.isEmpty()) {
        m_view->setGeometry(windowGeometry());
        keepSize(*m_view);
        placeRoot();
    }
    m_isPlacing = false;
    if (m_view->isVisible())
        applyShape();
    if (m_host != nullptr)
        m_host->makeRoomFor(*this);
    if (hasMoved)
        Q_EMIT moved();
}

/// The user or the window manager has moved it.
void FloatingPanel::noteMove() {
    const QPointF origin = DesktopCoordinates::current().toPoints(m_view->geometry()).topLeft();
    // Where the desktop places windows nobody tells us, and what Qt says of it is made up.
    if (m_isPlacing || m_isAppearing || m_frame.isEmpty() || origin == m_frame.topLeft() || !canPlaceWindows())
        return;
    m_frame.moveTopLeft(origin);
    Q_EMIT moved();
}

void FloatingPanel::orderFront() {
    appear(false);
}

void FloatingPanel::makeKeyAndOrderFront() {
    appear(true);
}

void FloatingPanel::appear(bool takesKeyboard) {
    load();
    m_isOrderedIn = true;
    if (isKeptOff())
        return;
    m_kit.refreshTheme();
    // So that nobody sees it whole.
    applyShape();
    // The name by which Qt passes this on to the window manager.
    m_view->setProperty("_q_showWithoutActivating", !takesKeyboard);
    if (m_host != nullptr) {
        showRoot(true, takesKeyboard);
        return;
    }
    // What comes to the screen comes above the others of its kind; and some window managers give the keyboard to
    // whoever is raised.
    if (m_view->isVisible()) {
        m_view->raise();
    } else {
        m_isAppearing = true;
        m_view->show();
    }
    if (takesKeyboard)
        m_view->requestActivate();
}

void FloatingPanel::leave() {
    if (m_host != nullptr)
        showRoot(false, false);
    else
        m_view->hide();
}

void FloatingPanel::stayWith(FloatingPanel& host) {
    if (canPlaceWindows())
        return;
    m_host = &host;
    host.m_companions.append(this);
}

/// Above the panel itself; the window must not grow while it is seen, for the desktop would move it.
void FloatingPanel::makeRoomFor(const FloatingPanel& companion) {
    const int needed = qCeil(companion.m_frame.height()) + 2 * companionGap;
    if (needed <= m_headroom)
        return;
    m_headroom = needed;
    place(std::exchange(m_frame, {}));
}

/// Companions stand in their host's window.
void FloatingPanel::placeRoot() {
    QQuickItem* root = m_view->rootObject();
    if (root == nullptr || (m_host == nullptr && m_headroom == 0))
        return;
    root->setSize(m_frame.size());
    if (m_host != nullptr)
        root->setPosition({std::clamp(m_frame.left() - m_host->m_frame.left(), 0.0,
                                      std::max(m_host->m_frame.width() - m_frame.width(), 0.0)),
                           m_host->m_headroom - companionGap - m_frame.height()});
    else
        root->setPosition(QPointF(0, m_headroom));
}

void FloatingPanel::showRoot(bool isShown, bool takesKeyboard) {
    QQuickItem* root = m_view->rootObject();
    if (root == nullptr)
        return;
    placeRoot();
    root->setVisible(isShown);
    if (isShown && takesKeyboard)
        root->forceActiveFocus();
    m_host->applyShape();
}

QRect FloatingPanel::windowGeometry() const {
    return DesktopCoordinates::current().toQt(m_frame.adjusted(0, 0, 0, m_headroom));
}

/// What the pointer finds of the window, in its own units, when the panel itself has that shape.
QRegion FloatingPanel::placesOfClicks(const QRegion& shape) const {
    QRegion region = shape.translated(0, m_headroom);
    for (const FloatingPanel* companion : m_companions)
        if (const QQuickItem* root = companion->m_view->rootObject(); root != nullptr && root->isVisible())
            region += root->mapRectToScene(root->boundingRect()).toAlignedRect();
    return region;
}

void FloatingPanel::exposed() {
    applyShape();
    // Some window managers (i3) shift a window by the frame that they then do not give it, a bit further each time that
    // it is shown.
    if (std::exchange(m_isAppearing, false))
        m_view->setGeometry(windowGeometry());
}

void FloatingPanel::orderOut() {
    m_isOrderedIn = false;
    leave();
}

bool FloatingPanel::isVisible() const {
    return m_isOrderedIn && !isKeptOff();
}

bool FloatingPanel::isKeptOff() const {
    return m_kit.recordingsSeeAllWindows() && m_sharingType == SharingType::none && !m_configuration.mayBeRecorded;
}

void FloatingPanel::setSharingType(SharingType sharingType) {
    if (std::exchange(m_sharingType, sharingType) == sharingType)
        return;
    m_registration->setSharingType(sharingType);
    if (!m_isOrderedIn)
        return;
    if (isKeptOff())
        leave();
    else if (m_host != nullptr || !m_view->isVisible())
        appear(false);
}

QWindow& FloatingPanel::window() {
    return *m_view;
}

/// At the first need: a panel that is never seen costs nothing.
void FloatingPanel::load() {
    if (m_view->status() != QQuickView::Null)
        return;
    m_view->setInitialProperties(m_configuration.properties);
    m_view->setSource(m_configuration.view);
    for (const QQmlError& error : m_view->errors())
        logLine("[KELDRA UI]", error.toString().toStdString());
    if (m_host != nullptr && m_view->rootObject()) {
        m_view->rootObject()->setVisible(false);
        m_view->rootObject()->setParentItem(m_host->m_view->contentItem());
    }
    placeRoot();
    if (QQuickItem* root = m_view->rootObject())
        QQmlProperty(root, QStringLiteral("outline")).connectNotifySignal(this, SLOT(applyShape()));
}

/// Again whenever the window is seen anew: Qt may have made another native window of it, and window managers look at
/// the shapes of windows that they manage already.
void FloatingPanel::applyShape() {
    const bool isTranslucent = m_kit.theme().isTranslucent();
    // Along a cut there is no half covered pixel.
    m_view->setColor(isTranslucent ? QColor(Qt::transparent) : m_kit.theme().ground());
    const double scale = m_view->devicePixelRatio();
    const QRegion whole(QRect(QPoint(), (m_frame.size() * scale).toSize()));
    QList<RoundedRect> outline;
    if (const QQuickItem* root = m_view->rootObject())
        outline = shapeParts(root->property("outline").value<QJSValue>().toVariant().toList());
    const bool hasOutline = !outline.isEmpty();
    if (!hasOutline)
        outline = {{QRectF(QPointF(), m_frame.size()), m_kit.theme().panelRadius()}};
    if (!isTranslucent) {
        cutToShape(*m_view, shapeRegion(outline, scale));
        m_isCut = true;
    } else if (std::exchange(m_isCut, false)) {
        cutToShape(*m_view, whole);
    }
    if (!canPlaceWindows())
        m_view->setMask(placesOfClicks(shapeRegion(outline, 1)));
    // What is cut off takes no clicks anyway.
    if (m_configuration.ignoresMouse)
        takeClicksOnlyIn(*m_view, {});
    else if (isTranslucent && hasOutline)
        takeClicksOnlyIn(*m_view, shapeRegion(outline, scale));
}

} // namespace keldra
