#pragma once

#include "scene/SceneLayout.h"

#include <cstdint>
#include <vector>
#include <xcb/xcb.h>

namespace keldra::scene {

/// Paints frames into a pixmap on the server and shows each with one copy, so that none is ever seen half painted.
class ScenePainter {
public:
    /// `colours` replace those of the first patches.
    ScenePainter(xcb_connection_t* connection, const xcb_screen_t& screen, xcb_window_t window, int width, int height,
                 const std::vector<std::uint32_t>& colours);
    ~ScenePainter();
    ScenePainter(const ScenePainter&) = delete;
    ScenePainter& operator=(const ScenePainter&) = delete;

    void paint(std::uint32_t number, std::uint32_t milliseconds);
    /// Copies the painted frame into the window and returns when the server has done so.
    void show();

private:
    void makeTexture();
    void fill(const Area& area, std::uint32_t rgb);
    void paintNumber(const NumberRow& row, std::uint32_t number);
    void paintPatches();
    void paintTexture(std::uint32_t number);

    xcb_connection_t* m_connection;
    std::uint8_t m_depth;
    xcb_window_t m_window;
    int m_width;
    int m_height;
    std::vector<std::uint32_t> m_colours;
    xcb_pixmap_t m_frame;
    xcb_pixmap_t m_texture;
    xcb_gcontext_t m_plain;
    xcb_gcontext_t m_tiled;
};

} // namespace keldra::scene
