#pragma once

#include "imaging/PixelBuffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

struct spa_pod;
struct spa_pod_builder;

namespace keldra {

/// How a camera stores its pictures, of those ways that we read.
enum class CameraEncoding { yuy2, uyvy, nv12, i420, bgrx, rgbx, jpeg };

struct CameraFormat {
    CameraEncoding encoding = CameraEncoding::yuy2;
    int width = 0;
    int height = 0;
    friend bool operator==(const CameraFormat&, const CameraFormat&) = default;
};

/// What we take, the best first: a sharp picture that moves well, else one that moves, else any.
std::vector<const spa_pod*> cameraFormats(spa_pod_builder& builder);

/// Nothing for what we do not read.
std::optional<CameraFormat> cameraFormatOf(const spa_pod& format);

/// One plane of a camera's picture as it lies in memory.
struct CameraPlane {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    /// 0 where the device does not say.
    int strideBytes = 0;
};

/// Writes the picture mirrored, as BGRA, into a buffer of its size. The planes may lie behind each other in the first.
/// False when it is shorter than its format says, or damaged.
[[nodiscard]] bool readCameraPicture(const CameraFormat& format, const std::vector<CameraPlane>& planes,
                                     PixelBuffer& target);

} // namespace keldra
