#include "platform/x11/DisplayImage.h"

#include "platform/x11/X11Error.h"

#include <algorithm>
#include <cstring>

namespace keldra {
namespace {

/// Pictures that the receiver may hold, and the one being made.
constexpr int poolLimit = 8;
constexpr int bytesPerPixel = 4;

bool hasReadablePixels(const X11Connection& x) {
    const xcb_setup_t* setup = xcb_get_setup(x.raw());
    if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST)
        return false;
    for (auto each = xcb_setup_pixmap_formats_iterator(setup); each.rem > 0; xcb_format_next(&each))
        if (each.data->depth == x.screen().root_depth)
            return each.data->bits_per_pixel == 8 * bytesPerPixel;
    return false;
}

} // namespace

Result<std::unique_ptr<DisplayImage>> DisplayImage::open(const DisplayCaptureConfiguration& configuration,
                                                         MonitorNumbers& numbers) {
    TRY_LET(const std::shared_ptr<X11Connection> connection, X11Connection::open());
    if (!hasReadablePixels(*connection))
        return fail(
            x11Error(X11ErrorCode::missingExtension, "The X server's pixels cannot be read: it must have 24 bits."));
    std::unique_ptr<DisplayImage> image(new DisplayImage(connection, configuration, numbers));
    TRY(image->findMonitor());
    return image;
}

DisplayImage::DisplayImage(std::shared_ptr<X11Connection> connection, const DisplayCaptureConfiguration& configuration,
                           MonitorNumbers& numbers)
    : m_connection(std::move(connection))
    , m_configuration(configuration)
    , m_numbers(numbers)
    , m_pool(PixelFormat::bgra, configuration.crop.width, configuration.crop.height, poolLimit) {
    if (configuration.showsCursor && m_connection->extensions().xfixes.isPresent)
        m_cursor.emplace(*m_connection);
}

Result<void> DisplayImage::findMonitor() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_monitorAskedAgainAt)
        return {};
    m_monitorAskedAgainAt = now + std::chrono::seconds(1);
    for (const X11Monitor& monitor : readMonitors(*m_connection))
        if (m_numbers.numberOf(monitor.name) == m_configuration.displayID) {
            m_monitor = monitor.rect;
            return {};
        }
    return fail(m_monitor.isEmpty()
                    ? x11Error(X11ErrorCode::unknownDisplay, "That display is not connected.")
                    : x11Error(X11ErrorCode::displayDisconnected, "The recorded display was disconnected."));
}

bool DisplayImage::readCursorEvents() {
    bool isNewShape = false;
    while (const XcbPtr<xcb_generic_event_t> event{xcb_poll_for_event(m_connection->raw())})
        isNewShape |= m_cursor && m_cursor->handle(*event);
    return isNewShape;
}

Result<PixelBuffer> DisplayImage::readIfChanged() {
    const X11Connection& x = *m_connection;
    if (x.isBroken())
        return fail(x11Error(X11ErrorCode::connectionLost, "The X display went away."));
    TRY(findMonitor());
    const bool isNewShape = readCursorEvents();
    const std::optional<QPoint> pointer = m_cursor ? m_cursor->position() : std::nullopt;
    const auto root = x.reply(xcb_get_geometry_reply, xcb_get_geometry(x.raw(), x.root()));
    if (!root)
        return fail(x11Error(X11ErrorCode::connectionLost, "The X display went away."));

    const PixelRect& crop = m_configuration.crop;
    const PixelRect area{m_monitor.x + crop.x, m_monitor.y + crop.y, crop.width, crop.height};
    const PixelRect seen = area.intersection(m_monitor).intersection({0, 0, root->width, root->height});
    XcbPtr<xcb_get_image_reply_t> reply;
    const std::uint8_t* bytes = nullptr;
    std::size_t count = 0;
    if (!seen.isEmpty()) {
        reply = x.reply(xcb_get_image_reply, xcb_get_image(x.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, x.root(),
                                                           std::int16_t(seen.x), std::int16_t(seen.y),
                                                           std::uint16_t(seen.width), std::uint16_t(seen.height), ~0u));
        // The screen may have shrunk meanwhile; the next look knows.
        if (!reply)
            return PixelBuffer();
        bytes = xcb_get_image_data(reply.get());
        count = std::size_t(xcb_get_image_data_length(reply.get()));
    }
    const bool isSame = !m_lastBytes.empty() && m_lastBytes.size() == count + 1 && pointer == m_lastPointer &&
                        !isNewShape && (count == 0 || std::memcmp(m_lastBytes.data(), bytes, count) == 0);
    if (isSame)
        return PixelBuffer();
    PixelBuffer picture = compose(bytes, seen, area);
    if (!picture) {
        forget();
        return picture;
    }
    // One byte more, so that an empty picture is not taken for none.
    m_lastBytes.resize(count + 1);
    if (count > 0)
        std::memcpy(m_lastBytes.data(), bytes, count);
    m_lastPointer = pointer;
    if (pointer)
        drawCursor(picture, m_cursor->image(), pointer->x() - area.x, pointer->y() - area.y);
    return picture;
}

PixelBuffer DisplayImage::compose(const std::uint8_t* bytes, const PixelRect& seen, const PixelRect& area) {
    PixelBuffer picture = m_pool.take();
    if (!picture)
        return picture;
    for (int y = 0; y < area.height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y));
        std::fill_n(row, area.width, 0xff000000U);
        const int sourceRow = area.y + y - seen.y;
        if (seen.isEmpty() || sourceRow < 0 || sourceRow >= seen.height)
            continue;
        const std::uint8_t* source = bytes + std::ptrdiff_t(sourceRow) * seen.width * bytesPerPixel;
        for (int column = 0; column < seen.width; ++column) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, source + std::ptrdiff_t(column) * bytesPerPixel, bytesPerPixel);
            row[seen.x - area.x + column] = pixel | 0xff000000U;
        }
    }
    return picture;
}

} // namespace keldra
