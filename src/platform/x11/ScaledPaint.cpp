#include "platform/x11/ScaledPaint.h"

#include "platform/x11/RenderPaint.h"

#include <string_view>

namespace keldra {

ScaledPaint::ScaledPaint(const X11Connection& connection, xcb_render_pictformat_t argb32, int width, int height)
    : m_connection(connection), m_picture(connection.newID()), m_width(width), m_height(height) {
    const X11Connection& x = connection;
    const xcb_pixmap_t pixmap = x.newID();
    // Samples at the edge must not fade into nothing.
    const std::uint32_t repeat = XCB_RENDER_REPEAT_PAD;
    xcb_create_pixmap(x.raw(), 32, pixmap, x.root(), std::uint16_t(width), std::uint16_t(height));
    xcb_render_create_picture(x.raw(), m_picture, pixmap, argb32, XCB_RENDER_CP_REPEAT, &repeat);
    xcb_free_pixmap(x.raw(), pixmap);
    constexpr std::string_view filter = "bilinear";
    xcb_render_set_picture_filter(x.raw(), m_picture, filter.size(), filter.data(), 0, nullptr);
}

ScaledPaint::~ScaledPaint() {
    xcb_render_free_picture(m_connection.raw(), m_picture);
}

void ScaledPaint::paint(xcb_render_picture_t frame, int frameWidth, int frameHeight, const FrameFit& fit) const {
    const auto fixed = [](double value) { return xcb_render_fixed_t(value * 65536); };
    const xcb_render_transform_t toSource{fixed(double(m_width) / fit.target.width),
                                          0,
                                          0, //
                                          0,
                                          fixed(double(m_height) / fit.target.height),
                                          0, //
                                          0,
                                          0,
                                          fixed(1)};
    const QRect target(fit.target.x, fit.target.y, fit.target.width, fit.target.height);
    paintBlack(m_connection, {frame, {}}, QRegion(0, 0, frameWidth, frameHeight) - target);
    xcb_render_set_picture_transform(m_connection.raw(), m_picture, toSource);
    paintRegion(m_connection, XCB_RENDER_PICT_OP_SRC, m_picture, target.topLeft(), {frame, {}}, target);
}

} // namespace keldra
