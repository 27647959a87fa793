#pragma once

#include <vector>

namespace keldra {

/// Heights of a file's sound for the timeline, in time order. A value.
struct EditorWaveform {
    /// From 0 (-54 dBFS and below) to 1 (full scale), linear in decibels; one for each bucket.
    std::vector<float> samples;
    /// The seconds that the buckets span.
    double duration = 0;

    static EditorWaveform empty() { return {}; }

    /// The greatest height between two seconds of a source that lasts so many; 0 where there is nothing.
    float peak(double from, double to, double sourceDuration) const;

    friend bool operator==(const EditorWaveform&, const EditorWaveform&) = default;
};

} // namespace keldra
