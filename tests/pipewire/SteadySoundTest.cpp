// Sound from clocks that run wrong, come late and lose pieces stands where it sounded, sample by sample.

#include "platform/pipewire/SteadySound.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <random>

namespace keldra::test {
namespace {

constexpr int rate = SteadySound::sampleRate;
/// Low enough that a place some milliseconds off is not taken for the period before.
constexpr double toneHertz = 50;
constexpr double loudness = 0.5;

/// A device as it really runs, on simulated clocks.
struct Device {
    double ppm = 0;
    /// How late a block is told of at most, seconds.
    double jitter = 0;
    int quantum = 1024;
    int channelCount = 1;
    std::mt19937 chance{20};
    double begin = 1000.25;
    std::int64_t frame = 0;
    std::int64_t ticks = 777;

    double soundedAt(std::int64_t which) const { return begin + double(which) / (rate * (1 + ppm * 1e-6)); }
    double now() const { return soundedAt(frame); }

    /// The next block: a tone of the host's time.
    void tell(SteadySound& sound, double late = 0) {
        std::vector<float> samples;
        for (int i = 0; i < quantum; ++i)
            for (int channel = 0; channel < channelCount; ++channel)
                samples.push_back(float((channel == 0 ? loudness : -loudness) *
                                        std::sin(2 * M_PI * toneHertz * soundedAt(frame + i))));
        const double more = jitter > 0 ? std::uniform_real_distribution(0.0, jitter)(chance) : 0;
        sound.hear({ticks, quantum, now() + late + more}, std::move(samples));
        skip(quantum);
    }
    void tellUntil(SteadySound& sound, double seconds) {
        while (now() < begin + seconds)
            tell(sound);
    }
    /// Loses frames, and counts them or not.
    void skip(std::int64_t frames, bool isCounted = true) {
        frame += frames;
        ticks += isCounted ? frames : 0;
    }
};

/// What was delivered, judged.
struct Heard {
    struct Hole {
        double at = 0;
        double seconds = 0;
    };
    std::vector<Hole> holes;
    std::vector<AudioBuffer> buffers;

    SteadySound::Deliver taker() {
        return [this](AudioBuffer sound) {
            EXPECT_EQ(sound.time().timescale(), rate) << "whole samples";
            if (!buffers.empty() && sound.time() != buffers.back().endTime()) {
                const MediaTime hole = sound.time() - buffers.back().endTime();
                EXPECT_GT(hole, MediaTime::zero()) << "sound never overlaps";
                holes.push_back({sound.time().seconds(), hole.seconds()});
            }
            buffers.push_back(std::move(sound));
        };
    }

    static double sampleAt(const AudioBuffer& buffer, std::int64_t frame, int channel = 0) {
        const std::byte* bytes = buffer.bytes() + frame * buffer.format().bytesPerFrame() + 3 * channel;
        const std::uint32_t word =
            std::uint32_t(bytes[0]) << 8 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 24;
        return double(std::int32_t(word) >> 8) / (1 << 23);
    }

    /// How far the tone stands from where it sounded (seconds, late is positive), buffer by buffer, with its loudness.
    struct Place {
        double at = 0;
        double late = 0;
        double loudness = 0;
    };
    std::vector<Place> places() const {
        std::vector<Place> found;
        std::complex<double> sum = 0;
        std::int64_t count = 0;
        for (const AudioBuffer& buffer : buffers)
            for (std::int64_t i = 0; i < buffer.frameCount(); ++i) {
                const double at = (buffer.time() + MediaTime(i, rate)).seconds();
                sum += sampleAt(buffer, i) * std::polar(1.0, -2 * M_PI * toneHertz * at);
                // Whole periods, so that nothing but the tone is seen.
                if (++count == 4 * rate / int(toneHertz)) {
                    const std::complex<double> tone = sum * std::complex<double>(0, 2) / double(count);
                    found.push_back({at, -std::arg(tone) / (2 * M_PI * toneHertz), std::abs(tone)});
                    sum = 0;
                    count = 0;
                }
            }
        return found;
    }
    double worstLate(double from, double to) const {
        double worst = 0;
        for (const Place& place : places())
            if (place.at >= from && place.at < to)
                worst = std::max(worst, std::abs(place.late));
        return worst;
    }
};

TEST(SteadySound, StandsWhereItSoundedWhateverTheDevicesClock) {
    struct Row {
        const char* name;
        double ppm;
        double jitter;
        int quantum;
        double worst;
    };
    // A report that may be late by as much is late by half of that on average.
    const Row rows[] = {
        {"a true clock", 0, 0, 1024, 0.00005},
        {"fast", 200, 0, 1024, 0.0002},
        {"slow", -200, 0, 256, 0.0002},
        {"fast, told late", 200, 0.006, 1024, 0.0045},
        {"slow, told late, small blocks", -200, 0.006, 256, 0.0045},
        {"large blocks", 50, 0.003, 8192, 0.004},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Device device{.ppm = row.ppm, .jitter = row.jitter, .quantum = row.quantum};
        Heard heard;
        SteadySound sound(1, heard.taker());
        device.tellUntil(sound, 40);
        sound.breakOff();

        EXPECT_TRUE(heard.holes.empty()) << heard.holes.size() << " at " << heard.holes.front().at;
        const double length = heard.buffers.back().endTime().seconds() - heard.buffers.front().time().seconds();
        EXPECT_NEAR(length, device.now() - device.begin, 0.006);
        EXPECT_LT(heard.worstLate(device.begin, device.begin + 5), 0.008);
        EXPECT_LT(heard.worstLate(device.begin + 25, device.begin + 40), row.worst);
        for (const Heard::Place& place : heard.places())
            ASSERT_NEAR(place.loudness, loudness, 0.01) << "no sample is lost or doubled, at " << place.at;
    }
}

TEST(SteadySound, IsNotMisledByTheFirstReports) {
    Device device;
    Heard heard;
    SteadySound sound(1, heard.taker());
    // What the graph takes is told only after the first block.
    device.tell(sound, 0.015);
    device.tell(sound, 0.015);
    device.tellUntil(sound, 2);
    EXPECT_LT(heard.worstLate(device.begin, device.now()), 0.001);

    // Even when there is hardly more than one.
    Device brief;
    Heard few;
    SteadySound glimpse(1, few.taker());
    brief.tell(glimpse);
    brief.tell(glimpse);
    glimpse.breakOff();
    ASSERT_FALSE(few.buffers.empty());
    EXPECT_NEAR(few.buffers.front().time().seconds(), brief.begin, 0.0001);
    EXPECT_EQ(few.buffers.back().endTime() - few.buffers.front().time(), MediaTime(2 * 1024, rate));
}

TEST(SteadySound, LeavesAHoleWhereTheDeviceLostSound) {
    struct Row {
        const char* name;
        double lost;
        bool isCounted;
    };
    const Row rows[] = {
        {"one block of the graph", 256.0 / rate, true},
        {"several", 0.064, true},
        {"many, where nobody counts", 0.100, false},
        {"a suspended machine", 7.5, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Device device{.ppm = 100, .jitter = 0.003, .quantum = 256};
        Heard heard;
        SteadySound sound(1, heard.taker());
        device.tellUntil(sound, 20);
        const double lostAt = device.now();
        device.skip(std::llround(row.lost * rate), row.isCounted);
        device.tellUntil(sound, 20 + row.lost + 10);
        sound.breakOff();

        ASSERT_EQ(heard.holes.size(), 1U);
        EXPECT_NEAR(heard.holes[0].seconds, row.lost, 0.0035);
        EXPECT_NEAR(heard.holes[0].at, lostAt + row.lost, 0.0045);
        EXPECT_LT(heard.worstLate(lostAt + row.lost + 0.1, device.now()), 0.0045)
            << "what follows stands right at once";
    }
}

TEST(SteadySound, TakesAStallForNoHole) {
    Device device{.jitter = 0.002, .quantum = 256};
    Heard heard;
    SteadySound sound(1, heard.taker());
    for (int stall = 0; stall < 10; ++stall) {
        device.tellUntil(sound, 2 * (stall + 1));
        // Nothing comes for a while; then all that waited comes at once.
        const double until = device.now() + 0.03 * (1 + stall);
        while (device.now() < until)
            device.tell(sound, until - device.now());
    }
    device.tellUntil(sound, 25);
    EXPECT_TRUE(heard.holes.empty());
    EXPECT_LT(heard.worstLate(device.begin, device.now()), 0.005);
}

TEST(SteadySound, GoesOnWhenADeviceComesBack) {
    Device device{.channelCount = 2};
    Heard heard;
    SteadySound sound(2, heard.taker());
    EXPECT_EQ(sound.format(), (AudioFormat{SampleKind::int24, 48000, 2}));
    device.tellUntil(sound, 3);
    sound.breakOff();
    EXPECT_NEAR(heard.buffers.back().endTime().seconds(), device.now(), 0.001) << "to its last sample";

    device.skip(2 * rate + 5, false);
    device.ticks = 3;
    device.ppm = -150;
    device.begin = device.now() + 1;
    device.frame = 0;
    device.tellUntil(sound, 3);
    sound.breakOff();
    ASSERT_EQ(heard.holes.size(), 1U);
    EXPECT_NEAR(heard.holes[0].at, device.begin, 0.001);
    EXPECT_LT(heard.worstLate(device.begin + 0.1, device.now()), 0.001);

    // The other channel went the same way.
    const AudioBuffer& last = heard.buffers.back();
    for (std::int64_t i = 0; i < last.frameCount(); ++i)
        ASSERT_EQ(Heard::sampleAt(last, i, 1), -Heard::sampleAt(last, i, 0));
}

} // namespace
} // namespace keldra::test
