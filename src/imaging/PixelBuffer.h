#pragma once

#include "imaging/Geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace keldra {

enum class PixelFormat {
    bgra, ///< 8 bits each of blue, green, red, alpha (premultiplied), in this order in memory; one plane
    i420, ///< 8-bit 4:2:0, BT.709 limited range; planes Y, U, V, chroma rounded up in size
};

/// A picture in memory. Copies share the pixels; a buffer handed on is not written any more.
///
/// Space: pixels, top row first.
/// Threads: any; who holds the only handle may write.
class PixelBuffer {
public:
    static constexpr int maximumPlanes = 3;

    struct Plane {
        std::uint8_t* data = nullptr;
        std::ptrdiff_t strideBytes = 0;
    };
    using Planes = std::array<Plane, maximumPlanes>;

    /// No picture.
    PixelBuffer() = default;
    /// Memory of its own, rows aligned to 64 bytes, contents undefined. Both sides must be positive.
    static PixelBuffer allocate(PixelFormat format, int width, int height);
    /// A picture over memory that `owner` keeps alive.
    static PixelBuffer wrap(PixelFormat format, int width, int height, const Planes& planes,
                            std::shared_ptr<const void> owner);

    explicit operator bool() const { return m_width > 0; }
    PixelFormat format() const { return m_format; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    static int planeCount(PixelFormat format) { return format == PixelFormat::bgra ? 1 : 3; }
    /// Columns and rows of a plane, in samples.
    int planeWidth(int plane) const { return plane == 0 ? m_width : (m_width + 1) / 2; }
    int planeHeight(int plane) const { return plane == 0 ? m_height : (m_height + 1) / 2; }

    const std::uint8_t* row(int plane, int y) const { return m_planes[plane].data + y * m_planes[plane].strideBytes; }
    std::uint8_t* mutableRow(int plane, int y) { return m_planes[plane].data + y * m_planes[plane].strideBytes; }
    const std::uint8_t* data(int plane = 0) const { return m_planes[plane].data; }
    std::uint8_t* mutableData(int plane = 0) { return m_planes[plane].data; }
    std::ptrdiff_t strideBytes(int plane = 0) const { return m_planes[plane].strideBytes; }

    /// The part inside `rect`, sharing these pixels; `rect` must lie inside, and on even coordinates for i420.
    PixelBuffer cropped(const PixelRect& rect) const;

private:
    PixelFormat m_format = PixelFormat::bgra;
    int m_width = 0;
    int m_height = 0;
    Planes m_planes;
    std::shared_ptr<const void> m_owner;
};

} // namespace keldra
