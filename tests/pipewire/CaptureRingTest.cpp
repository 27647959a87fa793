// Blocks go from the device's thread to ours whole and in order; what there is no room for is lost whole.

#include "platform/pipewire/CaptureRing.h"

#include <gtest/gtest.h>
#include <thread>

namespace keldra::test {
namespace {

/// A block that can be told from all others: its samples go on from its count.
std::vector<float> samplesOf(std::int64_t ticks, std::size_t count) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = float((ticks + std::int64_t(i)) % 1'000'000);
    return samples;
}

DeviceClock::Report report(std::int64_t ticks, std::int64_t frameCount) {
    return {ticks, frameCount, double(ticks) / 48000};
}

TEST(CaptureRing, LosesWholeBlocksWhenNobodyReads) {
    CaptureRing ring;
    constexpr int frames = 1000;
    std::int64_t written = 0;
    while (ring.write(report(written * frames, frames), 2, samplesOf(written * frames, 2 * frames).data()))
        ++written;
    EXPECT_EQ(written, 96) << "two seconds";
    EXPECT_FALSE(ring.write(report(written * frames, frames), 2, samplesOf(0, 2 * frames).data()));

    // There is room again behind each that is read, across the end of the memory too.
    std::vector<float> samples;
    for (std::int64_t block = 0; block < 300; ++block) {
        const auto read = ring.read(samples);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->ticks, block * frames);
        EXPECT_EQ(read->frameCount, frames);
        EXPECT_EQ(read->heardAt, double(block * frames) / 48000);
        EXPECT_EQ(samples, samplesOf(block * frames, 2 * frames));
        EXPECT_TRUE(ring.write(report(written * frames, frames), 2, samplesOf(written * frames, 2 * frames).data()));
        ++written;
    }
}

TEST(CaptureRing, TakesManySmallBlocks) {
    CaptureRing ring;
    int written = 0;
    const float sample = 1;
    while (ring.write(report(written, 1), 1, &sample))
        ++written;
    EXPECT_GT(written, 1000);
    std::vector<float> samples;
    for (int i = 0; i < written; ++i)
        ASSERT_EQ(ring.read(samples)->ticks, i);
    EXPECT_FALSE(ring.read(samples));
}

TEST(CaptureRing, KeepsOrderBetweenThreads) {
    CaptureRing ring;
    constexpr std::int64_t blocks = 4000;
    std::thread device([&] {
        std::int64_t ticks = 0;
        for (std::int64_t block = 0; block < blocks; ++block) {
            const std::int64_t frames = 1 + block * 37 % 1024;
            while (!ring.write(report(ticks, frames), 2, samplesOf(ticks, std::size_t(2 * frames)).data()))
                std::this_thread::yield();
            ticks += frames;
        }
    });
    std::int64_t expected = 0;
    std::int64_t read = 0;
    bool isInOrder = true;
    std::vector<float> samples;
    while (read < blocks && isInOrder) {
        const auto block = ring.read(samples);
        if (!block) {
            std::this_thread::yield();
            continue;
        }
        isInOrder = block->ticks == expected && samples == samplesOf(expected, std::size_t(2 * block->frameCount));
        expected += block->frameCount;
        ++read;
    }
    EXPECT_TRUE(isInOrder) << "near tick " << expected;
    // The device's thread must not wait for ever.
    while (read < blocks)
        read += ring.read(samples) ? 1 : 0;
    device.join();
}

} // namespace
} // namespace keldra::test
