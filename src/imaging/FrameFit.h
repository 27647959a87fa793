#pragma once

#include "imaging/Geometry.h"

namespace keldra {

/// Where a picture of one size lands in a frame of another.
struct FrameFit {
    /// The part of the frame that the picture covers; the rest is black.
    PixelRect target;
    /// Whether pixels are taken as they are, at most cropped; otherwise they are scaled.
    bool isPlain = true;

    friend bool operator==(const FrameFit&, const FrameFit&) = default;
};

/// Fits the picture in, aspect kept, centred. A picture that is at most one pixel larger on a side was rounded down to
/// an even size: it is cropped on the right and at the bottom, not scaled. Sizes are positive, in pixels.
FrameFit fitInto(int width, int height, int frameWidth, int frameHeight);

} // namespace keldra
