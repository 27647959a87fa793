#include "scene/ScenePainter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace keldra::scene {
namespace {

constexpr int textureSize = 256;
/// Pixels that the texture moves in a frame; both odd, so that no two frames of a second look alike.
constexpr int stepX = 7;
constexpr int stepY = 3;

/// Soft waves with diagonal bars over them: shades and edges, as an encoder meets them.
std::uint32_t textureColour(int x, int y) {
    constexpr double turn = 2 * 3.14159265358979 / textureSize;
    const auto shade = [](double value) { return std::uint32_t(std::clamp(128 + 100 * value, 0.0, 255.0)); };
    const double wave = std::sin(3 * turn * x) * std::cos(2 * turn * y);
    const bool isBar = (x + 2 * y) % 64 < 12;
    const std::uint32_t red = shade(wave);
    const std::uint32_t green = shade(std::sin(turn * (x + y)));
    const std::uint32_t blue = isBar ? 32 : shade(-wave);
    return red << 16 | green << 8 | blue;
}

} // namespace

ScenePainter::ScenePainter(xcb_connection_t* connection, const xcb_screen_t& screen, xcb_window_t window, int width,
                           int height, const std::vector<std::uint32_t>& colours)
    : m_connection(connection)
    , m_depth(screen.root_depth)
    , m_window(window)
    , m_width(width)
    , m_height(height)
    , m_frame(xcb_generate_id(connection))
    , m_texture(xcb_generate_id(connection))
    , m_plain(xcb_generate_id(connection))
    , m_tiled(xcb_generate_id(connection)) {
    for (std::size_t i = 0; i < patches.size(); ++i)
        m_colours.push_back(i < colours.size() ? colours[i] : patches[i].rgb);
    xcb_create_pixmap(connection, m_depth, m_frame, window, std::uint16_t(width), std::uint16_t(height));
    // Copies would otherwise tell us each time that nothing was hidden.
    const std::uint32_t noExposures = 0;
    xcb_create_gc(connection, m_plain, window, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    makeTexture();
    const std::uint32_t tiled[] = {XCB_FILL_STYLE_TILED, m_texture};
    xcb_create_gc(connection, m_tiled, window, XCB_GC_FILL_STYLE | XCB_GC_TILE, tiled);
    fill({0, 0, width, height}, backgroundRgb);
    paintPatches();
}

ScenePainter::~ScenePainter() {
    xcb_free_gc(m_connection, m_tiled);
    xcb_free_gc(m_connection, m_plain);
    xcb_free_pixmap(m_connection, m_texture);
    xcb_free_pixmap(m_connection, m_frame);
}

void ScenePainter::makeTexture() {
    xcb_create_pixmap(m_connection, m_depth, m_texture, m_window, textureSize, textureSize);
    // Row by row: a request has room for more, but not on every server for all.
    std::vector<std::uint32_t> row(textureSize);
    for (int y = 0; y < textureSize; ++y) {
        for (int x = 0; x < textureSize; ++x)
            row[std::size_t(x)] = textureColour(x, y);
        xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_texture, m_plain, textureSize, 1, 0, std::int16_t(y),
                      0, m_depth, textureSize * 4, reinterpret_cast<const std::uint8_t*>(row.data()));
    }
}

void ScenePainter::fill(const Area& area, std::uint32_t rgb) {
    const xcb_rectangle_t rectangle{std::int16_t(area.x), std::int16_t(area.y), std::uint16_t(area.width),
                                    std::uint16_t(area.height)};
    xcb_change_gc(m_connection, m_plain, XCB_GC_FOREGROUND, &rgb);
    xcb_poly_fill_rectangle(m_connection, m_frame, m_plain, 1, &rectangle);
}

void ScenePainter::paintNumber(const NumberRow& row, std::uint32_t number) {
    for (int i = 0; i <= row.bits; ++i)
        fill(block(row, i), isWhite(row, number, i) ? 0xffffff : 0);
}

void ScenePainter::paintPatches() {
    for (std::size_t i = 0; i < patches.size(); ++i)
        fill(patches[i].area, m_colours[i]);
}

void ScenePainter::paintTexture(std::uint32_t number) {
    const std::uint32_t origin[] = {number * stepX % textureSize, number * stepY % textureSize};
    xcb_change_gc(m_connection, m_tiled, XCB_GC_TILE_STIPPLE_ORIGIN_X | XCB_GC_TILE_STIPPLE_ORIGIN_Y, origin);
    const Area area = movingArea(m_width, m_height);
    const xcb_rectangle_t rectangle{std::int16_t(area.x), std::int16_t(area.y), std::uint16_t(area.width),
                                    std::uint16_t(area.height)};
    xcb_poly_fill_rectangle(m_connection, m_frame, m_tiled, 1, &rectangle);
}

void ScenePainter::paint(std::uint32_t number, std::uint32_t milliseconds) {
    paintNumber(frameNumber, number & ((1u << frameNumber.bits) - 1));
    paintNumber(clockMilliseconds, milliseconds);
    paintTexture(number);
}

void ScenePainter::show() {
    xcb_copy_area(m_connection, m_frame, m_window, m_plain, 0, 0, 0, 0, std::uint16_t(m_width),
                  std::uint16_t(m_height));
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

} // namespace keldra::scene
