// Frames go from one thread to another in order, and what was forgotten is never seen again.

#include "platform/pipewire/SoundRing.h"

#include "platform/pipewire/HeardBlock.h"

#include <gtest/gtest.h>
#include <thread>

namespace keldra::test {
namespace {

/// Frames that bear their numbers.
std::vector<float> numbered(std::int64_t first, std::size_t count) {
    std::vector<float> frames;
    for (std::size_t i = 0; i < count; ++i) {
        frames.push_back(float(first + std::int64_t(i)));
        frames.push_back(-frames.back());
    }
    return frames;
}

TEST(SoundRing, TakesWhatThereIsRoomFor) {
    SoundRing ring(100);
    std::vector<float> read(2 * 100);
    std::int64_t written = 0;
    std::int64_t expected = 0;
    // Often enough to go round several times.
    for (int turn = 0; turn < 40; ++turn) {
        EXPECT_EQ(ring.write(numbered(written, 70).data(), 70), 70U);
        written += 70;
        EXPECT_EQ(ring.write(numbered(written, 70).data(), 70), 30U);
        written += 30;
        EXPECT_EQ(ring.write(numbered(written, 1).data(), 1), 0U);
        for (const std::size_t wanted : {64U, 64U}) {
            const auto [first, count] = ring.read(read.data(), wanted);
            EXPECT_EQ(first, expected);
            EXPECT_EQ(count, std::min<std::size_t>(wanted, std::size_t(written - expected)));
            EXPECT_EQ(std::vector(read.begin(), read.begin() + 2 * std::ptrdiff_t(count)), numbered(first, count));
            expected += std::int64_t(count);
        }
    }
}

TEST(SoundRing, HasRoomAgainOnceItForgot) {
    SoundRing ring(10);
    EXPECT_EQ(ring.write(numbered(0, 10).data(), 10), 10U);
    EXPECT_EQ(ring.forget(), 10);
    EXPECT_EQ(ring.write(numbered(10, 10).data(), 10), 10U) << "although nobody has read";
    std::vector<float> read(2 * 4);
    EXPECT_EQ(ring.read(read.data(), 4).firstFrame, 10);
    EXPECT_EQ(read, numbered(10, 4));
    // With no reader at all the room comes to an end, and returns with the reader.
    while (ring.write(numbered(0, 10).data(), 10) > 0)
        ring.forget();
    ring.forget();
    EXPECT_EQ(ring.read(read.data(), 4).count, 0U);
    EXPECT_EQ(ring.write(numbered(0, 10).data(), 10), 10U);
}

TEST(SoundRing, KeepsOrderBetweenThreads) {
    SoundRing ring(64);
    constexpr std::int64_t total = 200'000;
    std::thread writing([&] {
        std::int64_t written = 0;
        for (int turn = 0; written < total; ++turn) {
            const std::size_t taken = ring.write(numbered(written, 37).data(), 37);
            written += std::int64_t(taken);
            if (taken == 0)
                std::this_thread::yield();
            if (turn % 50 == 0)
                ring.forget();
        }
    });
    std::vector<float> read(2 * 41);
    std::int64_t next = 0;
    bool isInOrder = true;
    while (next < total && isInOrder) {
        const auto [first, count] = ring.read(read.data(), 41);
        isInOrder = first >= next &&
                    std::vector(read.begin(), read.begin() + 2 * std::ptrdiff_t(count)) == numbered(first, count);
        next = first + std::int64_t(count);
        if (count == 0)
            std::this_thread::yield();
    }
    EXPECT_TRUE(isInOrder) << "near frame " << next;
    writing.join();
}

TEST(HeardBlock, TellsWhatIsHeard) {
    constexpr std::int64_t second = 1'000'000'000;
    // From 10 s on 480 frames are heard, for 10 ms, of which the first is the 1200th since the origin.
    const HeardBlock block{2'000, 480, 10 * second};
    struct Row {
        const char* name;
        std::int64_t now;
        std::int64_t origin;
        std::optional<double> frame;
        std::int64_t heardAt;
    };
    const Row rows[] = {
        {"at its begin", 10 * second, 800, 1200, 10 * second},
        {"within", 10 * second + 5'000'000, 800, 1440, 10 * second + 5'000'000},
        {"before it", 10 * second - 20'000'000, 800, 240, 10 * second - 20'000'000},
        {"long after, when nothing followed", 12 * second, 800, 1680, 10 * second + 10'000'000},
        {"before the first frame", 10 * second - 30'000'000, 800, std::nullopt, 0},
        {"of what was forgotten", 10 * second, 2'001, std::nullopt, 0},
    };
    for (const Row& row : rows) {
        const auto position = positionAt(row.now, block, row.origin);
        ASSERT_EQ(position.has_value(), row.frame.has_value()) << row.name;
        if (!position)
            continue;
        EXPECT_NEAR(position->frame, *row.frame, 0.001) << row.name;
        EXPECT_EQ(position->hostTime, MediaTime(row.heardAt / 1000, 1'000'000)) << row.name;
    }
}

TEST(HeardBlock, IsNeverTorn) {
    LastHeardBlock last;
    EXPECT_FALSE(last.latest());
    constexpr std::int64_t total = 100'000;
    std::thread publishing([&] {
        for (std::int64_t i = 1; i <= total; ++i)
            last.publish({i, 2 * i, 3 * i});
    });
    std::int64_t seen = 0;
    bool isWhole = true;
    while (seen < total && isWhole) {
        const auto block = last.latest();
        if (!block)
            continue;
        isWhole = block->firstFrame >= seen && block->frameCount == 2 * block->firstFrame &&
                  block->heardAt == 3 * block->firstFrame;
        seen = block->firstFrame;
    }
    EXPECT_TRUE(isWhole) << "at " << seen;
    publishing.join();
}

} // namespace
} // namespace keldra::test
