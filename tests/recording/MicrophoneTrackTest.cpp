#include "recording/MicrophoneTrack.h"

#include "doubles/ScriptedMovieWriter.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

const AudioFormat format{SampleKind::int24, 48000, 2};

class MicrophoneTrackTest : public testing::Test {
protected:
    static MediaTime frame(std::int64_t number) { return MediaTime(1000, 1) + MediaTime(number, 48000); }
    /// Sound that is nowhere zero.
    static AudioBuffer sound(std::int64_t first, std::int64_t count) {
        AudioBuffer buffer = AudioBuffer::allocate(format, count, frame(first));
        std::fill_n(buffer.mutableBytes(), buffer.byteCount(), std::byte(7));
        return buffer;
    }
    bool hear(std::int64_t first, std::int64_t count, bool isHeard = true) {
        return track.handle(sound(first, count), isHeard);
    }

    struct Written {
        std::int64_t first;
        std::int64_t count;
        bool isSilent;
        friend bool operator==(const Written&, const Written&) = default;
        friend void PrintTo(const Written& w, std::ostream* out) {
            *out << w.first << "+" << w.count << (w.isSilent ? " silent" : "");
        }
    };
    std::vector<Written> written() const {
        std::vector<Written> all;
        for (const AudioBuffer& buffer : script->sounds[0].buffers) {
            EXPECT_EQ(buffer.format(), format);
            all.push_back({(buffer.time() - frame(0)).converted(48000).value(), buffer.frameCount(),
                           std::all_of(buffer.bytes(), buffer.bytes() + buffer.byteCount(),
                                       [](std::byte byte) { return byte == std::byte(0); })});
        }
        return all;
    }
    using List = std::vector<Written>;
    bool& isReady() { return script->sounds[0].isReady; }

    std::shared_ptr<MovieWriterScript> script = std::make_shared<MovieWriterScript>();
    ScriptedMovieWriter writer{script};
    MicrophoneTrack track{writer.addAudioInput(format)->get()};
};

TEST_F(MicrophoneTrackTest, WritesBuffersAsTheyComeAndFillsHoles) {
    hear(0, 256);
    hear(256, 256);
    hear(513, 256);
    hear(1000, 256);
    hear(1200, 256);
    EXPECT_EQ(written(), (List{{0, 256, false},
                               {256, 256, false},
                               {512, 1, true},
                               {513, 256, false},
                               {769, 231, true},
                               {1000, 256, false},
                               {1200, 256, false}}))
        << "an overlap is the writer's to judge";
}

TEST_F(MicrophoneTrackTest, OneFillSpansAllThatWasLost) {
    hear(0, 100);
    isReady() = false;
    hear(100, 100);
    hear(200, 100);
    isReady() = true;
    hear(300, 100);
    EXPECT_EQ(written(), (List{{0, 100, false}, {100, 200, true}, {300, 100, false}}));
}

TEST_F(MicrophoneTrackTest, AFillThatUsesTheWriterUpLosesTheBufferButNotItsPlace) {
    hear(0, 100);
    script->sounds[0].appendsLeft = 1;
    hear(200, 100);
    script->sounds[0].appendsLeft.reset();
    hear(300, 100);
    EXPECT_EQ(written(), (List{{0, 100, false}, {100, 100, true}, {200, 100, true}, {300, 100, false}}));
}

TEST_F(MicrophoneTrackTest, WhatIsNotHeardIsSilenceOfTheSameLength) {
    hear(0, 100, false);
    hear(100, 100, true);
    hear(200, 100, false);
    EXPECT_EQ(written(), (List{{0, 100, true}, {100, 100, false}, {200, 100, true}}));
}

TEST_F(MicrophoneTrackTest, ReachesTheLastPicture) {
    EXPECT_TRUE(track.finish(frame(500)));
    EXPECT_TRUE(written().empty()) << "what never came is not made up";
    hear(0, 100);
    EXPECT_TRUE(track.finish(frame(50)));
    EXPECT_EQ(written().size(), 1u) << "sound past the last picture stays";
    isReady() = false;
    EXPECT_TRUE(track.finish(frame(500)));
    EXPECT_EQ(written().size(), 1u);
    isReady() = true;
    EXPECT_TRUE(track.finish(frame(500)));
    EXPECT_EQ(written(), (List{{0, 100, false}, {100, 400, true}}));
}

TEST_F(MicrophoneTrackTest, SaysWhenTheWriterRefuses) {
    EXPECT_TRUE(hear(0, 100));
    script->error = Error{"POSIX", 28, "full", {}};
    EXPECT_FALSE(hear(100, 100));
    EXPECT_FALSE(hear(300, 100)) << "the fill";
}

} // namespace
} // namespace keldra
