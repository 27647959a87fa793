#include "ui_kit/X11WindowManagement.h"

#include "ui_kit/X11Session.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMetaObject>
#include <QWindow>

#include <algorithm>
#include <cstring>
#include <string>
#include <xcb/randr.h>
#include <xcb/shape.h>

namespace keldra {
namespace {

constexpr std::uint32_t allDesktops = 0xffffffff;

void setNumbers(xcb_window_t window, const char* property, xcb_atom_t type, const std::vector<std::uint32_t>& values) {
    xcb_change_property(x11::connection(), XCB_PROP_MODE_REPLACE, window, x11::atom(property), type, 32,
                        std::uint32_t(values.size()), values.data());
}

/// Tells window managers what a panel is, each time it is shown: they forget it when it is hidden.
class PanelManners final : public QObject {
    Q_OBJECT

public:
    explicit PanelManners(QWindow& window) : QObject(&window), m_window(window) { window.installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            beforeShowing(xcb_window_t(m_window.winId()));
            QMetaObject::invokeMethod(this, &PanelManners::afterShowing, Qt::QueuedConnection);
        }
        return false;
    }

private:
    static void beforeShowing(xcb_window_t id) {
        setNumbers(id, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {x11::atom("_NET_WM_WINDOW_TYPE_UTILITY")});
        // Qt adds its own states to those it finds.
        setNumbers(id, "_NET_WM_STATE", XCB_ATOM_ATOM,
                   {x11::atom("_NET_WM_STATE_SKIP_TASKBAR"), x11::atom("_NET_WM_STATE_SKIP_PAGER"),
                    x11::atom("_NET_WM_STATE_STICKY")});
        // Without a frame, and with nothing to be done to it but these: who may maximise a window does so unasked when
        // it is as large as the screen.
        constexpr std::uint32_t tellsFunctionsAndFrame = 3;
        constexpr std::uint32_t moveAndClose = 4 | 32;
        setNumbers(id, "_MOTIF_WM_HINTS", x11::atom("_MOTIF_WM_HINTS"),
                   {tellsFunctionsAndFrame, moveAndClose, 0, 0, 0});
        // From its last time on the screen.
        xcb_delete_property(x11::connection(), id, x11::atom("_NET_WM_DESKTOP"));
    }

    /// To be on all desktops is asked of a window that is managed already: some misread what it says before (xfwm4 4.18
    /// puts it on the last one). Others (i3) look at the state alone.
    void afterShowing() {
        if (!m_window.isVisible())
            return;
        xcb_client_message_event_t wish{};
        wish.response_type = XCB_CLIENT_MESSAGE;
        wish.format = 32;
        wish.window = xcb_window_t(m_window.winId());
        wish.type = x11::atom("_NET_WM_DESKTOP");
        wish.data.data32[0] = allDesktops;
        constexpr std::uint32_t fromApplication = 1;
        wish.data.data32[1] = fromApplication;
        xcb_send_event(x11::connection(), 0, x11::root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&wish));
        xcb_flush(x11::connection());
    }

    QWindow& m_window;
};

/// Qt asks window managers for sizes in steps of its own units, which need not add up to what is wanted.
void allowEveryPixel(xcb_window_t window) {
    constexpr std::uint32_t hasIncrement = 1 << 6;
    constexpr std::uint32_t hasBaseSize = 1 << 8;
    std::vector<std::uint32_t> hints = x11::numbers(window, "WM_NORMAL_HINTS");
    if (hints.empty())
        return;
    hints.front() &= ~(hasIncrement | hasBaseSize);
    setNumbers(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, hints);
}

} // namespace

bool hasCompositingManager() {
    xcb_connection_t* const x = x11::connection();
    if (x == nullptr)
        return true;
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0)
        std::free(host);
    const std::string selection = "_NET_WM_CM_S" + std::to_string(screen);
    const x11::Ptr<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(x, xcb_get_selection_owner(x, x11::atom(selection.c_str())), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool hasWindowManager() {
    if (x11::connection() == nullptr)
        return true;
    const char* const property = "_NET_SUPPORTING_WM_CHECK";
    const std::vector<std::uint32_t> window = x11::numbers(x11::root(), property);
    // The property outlives a manager that ended badly; its window does not.
    return !window.empty() && x11::numbers(window.front(), property) == window;
}

std::vector<QRect> rootRectsOfMonitors() {
    xcb_connection_t* const x = x11::connection();
    if (x == nullptr || !x11::hasExtension(xcb_randr_id))
        return {};
    const x11::Ptr<xcb_randr_get_monitors_reply_t> answer(
        xcb_randr_get_monitors_reply(x, xcb_randr_get_monitors(x, x11::root(), 1), nullptr));
    if (!answer)
        return {};
    std::vector<QRect> monitors;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(answer.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each))
        monitors.emplace_back(each.data->x, each.data->y, each.data->width, each.data->height);
    return monitors;
}

QRect rectOfRoot() {
    xcb_connection_t* const x = x11::connection();
    if (x == nullptr)
        return {};
    // What the connection was told at its beginning may have changed.
    const x11::Ptr<xcb_get_geometry_reply_t> whole(
        xcb_get_geometry_reply(x, xcb_get_geometry(x, x11::root()), nullptr));
    return whole ? QRect(0, 0, whole->width, whole->height) : QRect();
}

void manageAsPanel(QWindow& window) {
    if (x11::connection() != nullptr)
        new PanelManners(window);
}

void raisePanelsExcept(const QWindow& window) {
    for (QWindow* each : QGuiApplication::topLevelWindows())
        if (each != &window && each->isExposed() && each->findChild<PanelManners*>({}, Qt::FindDirectChildrenOnly))
            each->raise();
}

bool placeInRoot(QWindow& window, const QRect& rootPixels) {
    xcb_connection_t* const x = x11::connection();
    if (x == nullptr || rootPixels.isEmpty())
        return false;
    allowEveryPixel(xcb_window_t(window.winId()));
    const std::uint32_t values[] = {std::uint32_t(rootPixels.x()), std::uint32_t(rootPixels.y()),
                                    std::uint32_t(rootPixels.width()), std::uint32_t(rootPixels.height())};
    xcb_configure_window(x, xcb_window_t(window.winId()),
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    xcb_flush(x);
    return true;
}

/// Null where no window has a shape.
static xcb_connection_t* shapingConnection() {
    xcb_connection_t* const x = x11::connection();
    return x != nullptr && x11::hasExtension(xcb_shape_id) ? x : nullptr;
}

static void setShape(xcb_window_t window, xcb_shape_sk_t kind, const QRegion& pixels, QPoint offset = {}) {
    std::vector<xcb_rectangle_t> rects;
    rects.reserve(std::size_t(pixels.rectCount()));
    for (const QRect& rect : pixels)
        rects.push_back({std::int16_t(rect.x()), std::int16_t(rect.y()), std::uint16_t(rect.width()),
                         std::uint16_t(rect.height())});
    // A QRegion's rectangles are sorted this way.
    xcb_shape_rectangles(x11::connection(), XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_YX_BANDED, window,
                         std::int16_t(offset.x()), std::int16_t(offset.y()), std::uint32_t(rects.size()), rects.data());
}

void cutToShape(QWindow& window, const QRegion& pixels) {
    xcb_connection_t* const x = shapingConnection();
    if (x == nullptr)
        return;
    setShape(xcb_window_t(window.winId()), XCB_SHAPE_SK_BOUNDING, pixels);
    xcb_flush(x);
}

void takeClicksOnlyIn(QWindow& window, const QRegion& pixels) {
    xcb_connection_t* const x = shapingConnection();
    if (x == nullptr)
        return;
    QPoint offset;
    for (auto each = xcb_window_t(window.winId());;) {
        setShape(each, XCB_SHAPE_SK_INPUT, pixels, offset);
        const auto place = xcb_get_geometry(x, each);
        const x11::Ptr<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x, xcb_query_tree(x, each), nullptr));
        const x11::Ptr<xcb_get_geometry_reply_t> inside(xcb_get_geometry_reply(x, place, nullptr));
        if (!tree || !inside || tree->parent == tree->root || tree->parent == XCB_WINDOW_NONE)
            break;
        offset += QPoint(inside->x + inside->border_width, inside->y + inside->border_width);
        each = tree->parent;
    }
    xcb_flush(x);
}

QImage takeScreenshot(const QRect& rootPixels) {
    xcb_connection_t* const x = x11::connection();
    if (x == nullptr)
        return {};
    const QRect inside = rootPixels & rectOfRoot();
    if (inside.isEmpty())
        return {};
    const x11::Ptr<xcb_get_image_reply_t> answer(xcb_get_image_reply(
        x,
        xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, x11::root(), std::int16_t(inside.x()), std::int16_t(inside.y()),
                      std::uint16_t(inside.width()), std::uint16_t(inside.height()), ~0U),
        nullptr));
    const std::size_t rowBytes = std::size_t(inside.width()) * 4;
    if (!answer || (answer->depth != 24 && answer->depth != 32) ||
        std::size_t(xcb_get_image_data_length(answer.get())) < rowBytes * std::size_t(inside.height()))
        return {};
    QImage image(rootPixels.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    const QPoint place = inside.topLeft() - rootPixels.topLeft();
    const std::uint8_t* row = xcb_get_image_data(answer.get());
    for (int y = 0; y < inside.height(); ++y, row += rowBytes)
        std::memcpy(image.scanLine(place.y() + y) + place.x() * 4, row, rowBytes);
    return image;
}

} // namespace keldra

#include "X11WindowManagement.moc"
