#include "imaging/PixelBuffer.h"

#include <cassert>
#include <new>
#include <utility>

namespace keldra {
namespace {

constexpr std::size_t rowAlignment = 64;

std::size_t alignedRow(int bytes) {
    return (std::size_t(bytes) + rowAlignment - 1) / rowAlignment * rowAlignment;
}

} // namespace

PixelBuffer PixelBuffer::allocate(PixelFormat format, int width, int height) {
    assert(width > 0 && height > 0);
    PixelBuffer buffer;
    buffer.m_format = format;
    buffer.m_width = width;
    buffer.m_height = height;

    std::size_t total = 0;
    std::array<std::size_t, maximumPlanes> offsets{};
    for (int plane = 0; plane < planeCount(format); ++plane) {
        const int samples = buffer.planeWidth(plane) * (format == PixelFormat::bgra ? 4 : 1);
        buffer.m_planes[plane].strideBytes = std::ptrdiff_t(alignedRow(samples));
        offsets[plane] = total;
        total += alignedRow(samples) * std::size_t(buffer.planeHeight(plane));
    }
    // Kernels read whole vectors; the tail keeps the last row's reads inside.
    auto* memory = static_cast<std::uint8_t*>(::operator new(total + rowAlignment, std::align_val_t(rowAlignment)));
    buffer.m_owner = std::shared_ptr<std::uint8_t>(
        memory, [](std::uint8_t* bytes) { ::operator delete(bytes, std::align_val_t(rowAlignment)); });
    for (int plane = 0; plane < planeCount(format); ++plane)
        buffer.m_planes[plane].data = memory + offsets[plane];
    return buffer;
}

PixelBuffer PixelBuffer::wrap(PixelFormat format, int width, int height, const Planes& planes,
                              std::shared_ptr<const void> owner) {
    assert(width > 0 && height > 0);
    PixelBuffer buffer;
    buffer.m_format = format;
    buffer.m_width = width;
    buffer.m_height = height;
    buffer.m_planes = planes;
    buffer.m_owner = std::move(owner);
    return buffer;
}

PixelBuffer PixelBuffer::cropped(const PixelRect& rect) const {
    assert(rect.x >= 0 && rect.y >= 0 && rect.right() <= m_width && rect.bottom() <= m_height && !rect.isEmpty());
    PixelBuffer part = *this;
    part.m_width = rect.width;
    part.m_height = rect.height;
    if (m_format == PixelFormat::bgra) {
        part.m_planes[0].data += rect.y * m_planes[0].strideBytes + rect.x * 4;
        return part;
    }
    assert(rect.x % 2 == 0 && rect.y % 2 == 0);
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1;
        part.m_planes[plane].data += (rect.y >> shift) * m_planes[plane].strideBytes + (rect.x >> shift);
    }
    return part;
}

} // namespace keldra
