#pragma once

#include "imaging/PixelBuffer.h"
#include "imaging/Resample.h"
#include "recording/CameraOverlayState.h"
#include "recording/OverlaySpace.h"

#include <QRectF>

#include <optional>
#include <vector>

namespace keldra {

/// A bubble on a frame; pixels, top row first.
struct BubblePlace {
    QRectF rect;
    double cornerRadius = 0;
    friend bool operator==(const BubblePlace&, const BubblePlace&) = default;
};

/// Where the bubble shows: its visible part, to which the picture is then fitted. Nothing when it is hidden, outside
/// the frame, or not larger than a pixel.
std::optional<BubblePlace> placeBubble(const CameraOverlaySnapshot& overlay, const OverlaySpace& space);

/// Draws the camera's picture as a bubble. Keeps its masks: a bubble that stays where it is costs only its pixels. One
/// thread.
class CameraBubble {
public:
    void draw(PixelBuffer& frame, const PixelBuffer& camera, const BubblePlace& place);

private:
    void prepareMask(const BubblePlace& place, const PixelRect& bounds);

    RowResampler m_resampler;
    BubblePlace m_maskPlace;
    PixelRect m_maskBounds;
    /// How much of each pixel the bubble covers.
    std::vector<std::uint8_t> m_mask;
};

} // namespace keldra
