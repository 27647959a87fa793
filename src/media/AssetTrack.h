#pragma once

#include "base/MediaTime.h"
#include "imaging/Geometry.h"

#include <string>

namespace keldra {

enum class MediaKind { video, audio };

/// What is known of one track of a file without decoding it.
struct AssetTrack {
    /// The stream's number in the file.
    int index = 0;
    MediaKind kind = MediaKind::video;
    /// Where the track has media, on the file's own time line, which starts at zero.
    MediaTimeRange timeRange;
    /// Video: one picture that stands for as long as is wanted; its time range is a proposal.
    bool isStill = false;
    /// Video: coded size with pixel aspect applied, before the preferred transform.
    Size naturalSize;
    /// Video: turns the coded picture upright; origin top left, y down. The rectangle it maps the picture to may have
    /// a negative origin.
    AffineTransform preferredTransform;
    /// Video: frames per second as the file states it, 0 when it does not.
    double nominalFrameRate = 0;
    /// Audio.
    int sampleRate = 0;
    int channelCount = 0;
    /// The codec's short name, e.g. "h264", "pcm_f32le".
    std::string codecName;
};

} // namespace keldra
