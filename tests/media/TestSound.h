#pragma once

#include "TestMovies.h"
#include "media/AudioTrackReader.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace keldra::test {

/// Interleaved samples and what they are.
struct TestSound {
    int sampleRate = 48000;
    int channelCount = 1;
    std::vector<float> samples;

    std::int64_t frameCount() const { return std::int64_t(samples.size()) / channelCount; }
    float at(std::int64_t frame, int channel = 0) const {
        const bool isThere = frame >= 0 && frame < frameCount();
        return isThere ? samples[std::size_t(frame * channelCount + channel)] : 0;
    }
};

/// Tones that glide, another in each channel, so that no two places sound alike.
inline TestSound glidingTones(double seconds, int sampleRate = 48000, int channelCount = 1, float loudness = 0.4F) {
    TestSound sound{sampleRate, channelCount, {}};
    const auto frames = std::int64_t(seconds * sampleRate);
    for (std::int64_t n = 0; n < frames; ++n)
        for (int channel = 0; channel < channelCount; ++channel) {
            const double t = double(n) / sampleRate;
            const double phase = 2 * M_PI * ((300.0 + 110 * channel) * t + 90.0 * t * t);
            sound.samples.push_back(loudness * float(std::sin(phase) * (0.6 + 0.4 * std::sin(2 * M_PI * 1.3 * t))));
        }
    return sound;
}

/// Silence but for a full-scale sample in every channel at each of these frames.
inline TestSound clicks(double seconds, const std::vector<std::int64_t>& frames, int sampleRate = 48000,
                        int channelCount = 1) {
    TestSound sound{sampleRate, channelCount, {}};
    sound.samples.assign(std::size_t(seconds * sampleRate) * std::size_t(channelCount), 0.0F);
    for (const std::int64_t frame : frames)
        for (int channel = 0; channel < channelCount; ++channel)
            sound.samples[std::size_t(frame * channelCount + channel)] = 1;
    return sound;
}

/// A WAV of 32-bit floats. `statedBytes` is what its header says of the data, where that shall be a lie.
inline void writeWav(const std::string& path, const TestSound& sound, std::int64_t statedBytes = -1) {
    const auto dataBytes = std::uint32_t(sound.samples.size() * sizeof(float));
    std::vector<char> bytes;
    const auto text = [&](const char* word) { bytes.insert(bytes.end(), word, word + 4); };
    const auto number = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            bytes.push_back(char(value >> (8 * i)));
    };
    text("RIFF"), number(dataBytes + 36, 4), text("WAVE");
    text("fmt "), number(16, 4), number(3, 2), number(std::uint32_t(sound.channelCount), 2);
    number(std::uint32_t(sound.sampleRate), 4), number(std::uint32_t(sound.sampleRate * sound.channelCount * 4), 4);
    number(std::uint32_t(sound.channelCount * 4), 2), number(32, 2);
    text("data"), number(statedBytes < 0 ? dataBytes : std::uint32_t(statedBytes), 4);
    const auto* data = reinterpret_cast<const char*>(sound.samples.data());
    bytes.insert(bytes.end(), data, data + dataBytes);
    writeBytes(path, bytes);
}

inline std::unique_ptr<AudioTrackReader> openSound(const std::string& path, AudioTrackReader::Options options = {},
                                                   std::size_t track = 0) {
    const auto asset = Asset::open(path);
    EXPECT_TRUE(asset) << (asset ? "" : asset.error().message);
    if (!asset)
        return nullptr;
    auto reader = AudioTrackReader::open(*asset, (*asset)->tracks(MediaKind::audio).at(track).index, options);
    EXPECT_TRUE(reader) << (reader ? "" : reader.error().message);
    return reader ? std::move(*reader) : nullptr;
}

/// Sound as it lies on the file's line from where it was read, holes as silence.
struct ReadSound : TestSound {
    /// Of the first sample read; -1 when there was none.
    std::int64_t first = -1;
    std::int64_t end() const { return first + frameCount(); }
    float onLine(std::int64_t position, int channel = 0) const { return at(position - first, channel); }
    /// First and end of each hole.
    std::vector<std::pair<std::int64_t, std::int64_t>> holes;
    std::string error;
};

inline ReadSound readOn(AudioTrackReader& reader, std::int64_t atMost = std::int64_t(1) << 40) {
    ReadSound read;
    read.sampleRate = reader.format().sampleRate;
    read.channelCount = reader.format().channelCount;
    while (read.frameCount() < atMost) {
        const auto buffer = reader.next();
        if (!buffer)
            read.error = buffer.error().message;
        if (!buffer || !*buffer)
            break;
        const std::int64_t position = (**buffer).time().value();
        if (read.first < 0)
            read.first = position;
        const std::int64_t end = read.end();
        EXPECT_GE(position, end) << "stretches overlap";
        EXPECT_LT(position - end, 3600 * read.sampleRate) << "a hole of more than an hour";
        if (position > end) {
            read.holes.emplace_back(end, position);
            read.samples.resize(std::size_t(position - read.first) * std::size_t(read.channelCount));
        }
        const auto* samples = (**buffer).samples<float>();
        read.samples.insert(read.samples.end(), samples,
                            samples + (**buffer).frameCount() * std::int64_t(read.channelCount));
    }
    return read;
}

inline ReadSound readWhole(const std::string& path, std::size_t track = 0) {
    const auto reader = openSound(path, {}, track);
    return reader ? readOn(*reader) : ReadSound();
}

/// How far `heard` lies behind `sung`: the lag, of those up to `farthest`, where they differ least.
inline int lagOf(const TestSound& sung, const ReadSound& heard, int farthest) {
    int best = 0;
    double least = INFINITY;
    for (int lag = -farthest; lag <= farthest; ++lag) {
        double difference = 0;
        for (std::int64_t n = sung.sampleRate / 2; n < sung.sampleRate / 2 + 4000; ++n)
            difference += std::pow(double(sung.at(n)) - double(heard.onLine(n + lag)), 2);
        if (difference < least) {
            least = difference;
            best = lag;
        }
    }
    return best;
}

inline std::int64_t loudestFrame(const TestSound& sound, std::int64_t from = 0, std::int64_t to = -1) {
    std::int64_t loudest = from;
    for (std::int64_t n = from; n < (to < 0 ? sound.frameCount() : to); ++n)
        if (std::abs(sound.at(n)) > std::abs(sound.at(loudest)))
            loudest = n;
    return loudest;
}

} // namespace keldra::test
