#include "platform/x11/RenderPaint.h"

#include <vector>

namespace keldra {

void paintRegion(const X11Connection& x, std::uint8_t operation, xcb_render_picture_t source, QPoint sourceOrigin,
                 const PaintTarget& target, const QRegion& region) {
    for (const QRect& rect : region) {
        const QPoint from = rect.topLeft() - sourceOrigin;
        const QPoint to = rect.topLeft() - target.origin;
        xcb_render_composite(x.raw(), operation, source, 0, target.picture, std::int16_t(from.x()),
                             std::int16_t(from.y()), 0, 0, std::int16_t(to.x()), std::int16_t(to.y()),
                             std::uint16_t(rect.width()), std::uint16_t(rect.height()));
    }
}

void paintBlack(const X11Connection& x, const PaintTarget& target, const QRegion& region) {
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& rect : region) {
        const QPoint to = rect.topLeft() - target.origin;
        rectangles.push_back(
            {std::int16_t(to.x()), std::int16_t(to.y()), std::uint16_t(rect.width()), std::uint16_t(rect.height())});
    }
    if (!rectangles.empty())
        xcb_render_fill_rectangles(x.raw(), XCB_RENDER_PICT_OP_SRC, target.picture, {0, 0, 0, 0xffff},
                                   std::uint32_t(rectangles.size()), rectangles.data());
}

} // namespace keldra
