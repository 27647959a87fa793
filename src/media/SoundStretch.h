#pragma once

#include "base/Result.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace keldra {

/// Plays interleaved stereo floats faster or slower without changing their pitch. One thread.
class SoundStretch {
public:
    /// `rate` from 0.25 to 4: how many seconds of sound go into one.
    [[nodiscard]] static Result<std::unique_ptr<SoundStretch>> open(double rate, int sampleRate);
    ~SoundStretch();

    /// Takes `count` frames; none means the end of the sound. Adds what is ready to `output`.
    [[nodiscard]] Result<void> process(const float* frames, std::size_t count, std::vector<float>& output);

private:
    struct Graph;
    explicit SoundStretch(std::unique_ptr<Graph> graph);
    std::unique_ptr<Graph> m_graph;
};

} // namespace keldra
