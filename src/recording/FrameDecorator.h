#pragma once

#include "imaging/PixelBufferPool.h"
#include "recording/CameraBubble.h"
#include "recording/OverlaySpace.h"
#include "recording/PointerEffectsSnapshot.h"

namespace keldra {

/// What lies over one frame.
struct FrameOverlays {
    PointerEffectsSnapshot effects;
    CameraOverlaySnapshot camera;
    /// Empty when there is none.
    PixelBuffer cameraPicture;
    OverlaySpace space;
};

/// Whether the bubble would be seen.
bool showsBubble(const FrameOverlays& overlays);

/// Draws camera bubble and pointer effects over frames, the effects above the bubble. One thread.
class FrameDecorator {
public:
    /// The size of the frames.
    FrameDecorator(int width, int height);
    /// A copy with what lies over it; nothing when nothing would be seen, or no memory is left in the pool.
    PixelBuffer decorated(const PixelBuffer& frame, const FrameOverlays& overlays);

private:
    PixelBufferPool m_pool;
    CameraBubble m_bubble;
};

} // namespace keldra
