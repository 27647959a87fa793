#pragma once

#include "base/MediaTime.h"
#include "media/Composition.h"
#include "media/FrameCompositor.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace keldra {

/// What governs the picture during one stretch of the time line. Immutable; who composes derives from it.
struct VideoInstruction {
    virtual ~VideoInstruction() = default;

    MediaTimeRange timeRange;
    /// Whether the picture changes inside the stretch even when its sources stand still.
    bool containsTweening = false;
    /// The composition tracks whose pictures are needed.
    std::vector<std::int32_t> requiredSourceTrackIDs;
};

/// How a composition's pictures are put together: size, rate, instructions in time, and who draws.
struct VideoComposition {
    int renderWidth = 0;
    int renderHeight = 0;
    MediaTime frameDuration;
    /// Ordered, from zero to the composition's end without a hole.
    std::vector<std::shared_ptr<const VideoInstruction>> instructions;
    std::function<std::unique_ptr<FrameCompositor>()> makeCompositor;

    /// The instruction that holds `time`; null outside all.
    std::shared_ptr<const VideoInstruction> instructionAt(MediaTime time) const;
    /// How many frames cover `duration`; the last may reach beyond it.
    std::int64_t frameCount(MediaTime duration) const;
};

/// Looks for what would make the pair unplayable: sizes or frame duration that are not positive, empty or overlapping
/// ranges, holes, an end that is not the composition's, tracks that are not there. One line per fault; none is good.
std::vector<std::string> findFaults(const VideoComposition& videoComposition, const Composition& composition);

} // namespace keldra
