#include "TestSound.h"
#include "base/HostClock.h"

namespace keldra {
namespace {

using namespace test;

constexpr int rate = 48000;
const MediaTime sessionStart(123'456'789, HostClock::timescale);

/// The sample that belongs on that frame of the file's line, exact in 24 bits.
std::int32_t valueAt(std::int64_t frame, int channel) {
    return std::int32_t((frame * 7919 + channel * 1'000'003 + 12345) % 8'000'000) - 4'000'000;
}

float levelAt(SampleKind kind, std::int64_t frame, int channel) {
    const float whole = float(valueAt(frame, channel)) / 8'388'608;
    return kind == SampleKind::int16 ? float(valueAt(frame, channel) / 256) / 32768 : whole;
}

void store(std::byte* target, SampleKind kind, std::int64_t frame, int channel) {
    const std::int32_t value = valueAt(frame, channel);
    const auto narrow = std::int16_t(value / 256);
    const float level = levelAt(kind, frame, channel);
    switch (kind) {
    case SampleKind::int16:
        std::memcpy(target, &narrow, 2);
        return;
    case SampleKind::int24:
        std::memcpy(target, &value, 3);
        return;
    case SampleKind::float32:
        std::memcpy(target, &level, 4);
        return;
    }
}

/// Sound that says of each frame where it belongs.
AudioBuffer soundAt(const AudioFormat& format, std::int64_t firstFrame, std::int64_t count) {
    AudioBuffer buffer = AudioBuffer::allocate(format, count, sessionStart + MediaTime(firstFrame, format.sampleRate));
    for (std::int64_t n = 0; n < count; ++n)
        for (int channel = 0; channel < format.channelCount; ++channel)
            store(buffer.mutableBytes() + n * format.bytesPerFrame() + channel * format.bytesPerSample(), format.kind,
                  firstFrame + n, channel);
    return buffer;
}

struct Stretch {
    std::int64_t first;
    std::int64_t count;
    std::int64_t end() const { return first + count; }
};

struct SoundRow {
    const char* name;
    AudioFormat format;
    std::vector<Stretch> appended;
    /// Frames that are silent, besides which every frame up to the end of all is what belongs there.
    std::vector<Stretch> silent;
    std::int64_t end;
};

const AudioFormat voice{SampleKind::int24, rate, 2};
const AudioFormat click{SampleKind::float32, rate, 1};

void expectInPlace(const SoundRow& row, const std::string& path) {
    const ReadSound read = readWhole(path);
    EXPECT_EQ(read.channelCount, row.format.channelCount);
    EXPECT_EQ(read.first, 0);
    EXPECT_EQ(read.end(), row.end);
    EXPECT_TRUE(read.holes.empty());
    std::int64_t wrong = 0;
    for (std::int64_t n = 0; n < row.end; ++n)
        for (int channel = 0; channel < row.format.channelCount; ++channel) {
            const bool isSilent = std::any_of(row.silent.begin(), row.silent.end(), [n](const Stretch& stretch) {
                return n >= stretch.first && n < stretch.end();
            });
            const float wanted = isSilent ? 0 : levelAt(row.format.kind, n, channel);
            if (read.onLine(n, channel) != wanted && wrong++ < 3)
                ADD_FAILURE() << path << ", frame " << n << ": " << read.onLine(n, channel) << " for " << wanted;
        }
    EXPECT_EQ(wrong, 0);
}

class TakeWithSound : public testing::TestWithParam<SoundRow> {};

TEST_P(TakeWithSound, HoldsEveryFrameAtItsOwnTime) {
    const SoundRow& row = GetParam();
    const TemporaryFolder folder;
    for (const bool isFinished : {true, false}) {
        const std::string path = folder / (isFinished ? "take.mov" : "growing.mov");
        {
            SerialQueue answer("test.answer");
            FileMovieWriter writer(path);
            MovieWriterVideoInput& pictures = *writer.addVideoInput(smallTrack());
            MovieWriterAudioInput& sound = *writer.addAudioInput(row.format);
            ASSERT_TRUE(writer.startWriting());
            writer.startSession(sessionStart);
            ASSERT_TRUE(appendWhenReady(writer, pictures, paintedPicture(0), sessionStart));
            for (const Stretch& stretch : row.appended)
                ASSERT_TRUE(sound.append(soundAt(row.format, stretch.first, stretch.count)));
            ASSERT_TRUE(appendWhenReady(writer, pictures, paintedPicture(1), sessionStart + MediaTime(1, 4)));
            pictures.markAsFinished();
            sound.markAsFinished();
            EXPECT_FALSE(sound.append(soundAt(row.format, 0, 1)));
            if (isFinished) {
                ASSERT_TRUE(finishAndWait(writer, answer, sessionStart + MediaTime(1, 1)));
            }
        }
        expectInPlace(row, path);
        EXPECT_EQ(picturesIn(path), (std::vector<ShownPicture>{{0, MediaTime::zero()}, {1, MediaTime(1, 4)}}));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , TakeWithSound,
    testing::Values(SoundRow{"inStep", voice, {{0, 256}, {256, 256}, {512, 9000}}, {}, 9512},
                    SoundRow{"clicks", click, {{0, 768}, {768, 768}, {1536, 768}}, {}, 2304},
                    SoundRow{"narrow", {SampleKind::int16, 44100, 1}, {{0, 441}, {441, 44100}}, {}, 44541},
                    SoundRow{"aLateStartBeginsWithSilence", voice, {{7200, 480}}, {{0, 7200}}, 7680},
                    SoundRow{"aHoleIsSilence", voice, {{0, 480}, {150'000, 480}}, {{480, 149'520}}, 150'480},
                    SoundRow{"anOverlapIsTrimmedAndNotShifted", voice, {{0, 480}, {400, 480}, {500, 100}}, {}, 880},
                    SoundRow{"aStartBeforeTheSessionIsTrimmed", voice, {{-300, 256}, {-44, 256}}, {}, 212}),
    [](const auto& row) { return row.param.name; });

TEST(MovieWriterSound, RefusesWhatDoesNotBelongToTheTrack) {
    const TemporaryFolder folder;
    FileMovieWriter writer(folder / "take.mov");
    ASSERT_TRUE(writer.addVideoInput(smallTrack()));
    EXPECT_FALSE(writer.addAudioInput({SampleKind::int24, 0, 2}));
    MovieWriterAudioInput& sound = *writer.addAudioInput(voice);
    EXPECT_FALSE(sound.append(soundAt(voice, 0, 10))) << "before writing";
    ASSERT_TRUE(writer.startWriting());
    EXPECT_FALSE(sound.isReadyForMoreMediaData()) << "before the session";
    writer.startSession(sessionStart);
    EXPECT_FALSE(sound.append(soundAt(click, 0, 10))) << "another format";
    EXPECT_FALSE(sound.append(AudioBuffer()));
    EXPECT_FALSE(writer.addAudioInput(click)) << "a track that comes too late";
    EXPECT_FALSE(writer.error());
}

TEST(MovieWriterSound, SeveralTracksStandBesideThePicture) {
    const TemporaryFolder folder;
    const std::string path = folder / "take.mov";
    SerialQueue answer("test.answer");
    FileMovieWriter writer(path);
    MovieWriterVideoInput& pictures = *writer.addVideoInput(smallTrack());
    MovieWriterAudioInput& first = *writer.addAudioInput(voice);
    MovieWriterAudioInput& second = *writer.addAudioInput(click);
    ASSERT_TRUE(writer.addAudioInput(click)) << "a track that stays empty";
    ASSERT_TRUE(writer.startWriting());
    writer.startSession(sessionStart);
    for (int i = 0; i < 90; ++i) {
        ASSERT_TRUE(appendWhenReady(writer, pictures, paintedPicture(i), sessionStart + MediaTime(i, 30)));
        ASSERT_TRUE(first.append(soundAt(voice, i * 1600, 1600)));
        ASSERT_TRUE(second.append(soundAt(click, i * 1600, 1600)));
    }
    ASSERT_TRUE(finishAndWait(writer, answer, sessionStart + MediaTime(3, 1)));

    const auto asset = Asset::open(path);
    ASSERT_TRUE(asset);
    const auto sounds = (*asset)->tracks(MediaKind::audio);
    ASSERT_EQ(sounds.size(), 2u) << "what never had a sample is no track of the finished movie";
    EXPECT_EQ(sounds[0].codecName, "pcm_s24le");
    EXPECT_EQ(sounds[1].codecName, "pcm_f32le");
    EXPECT_EQ((*asset)->duration(), MediaTime(3, 1));
    for (std::size_t track = 0; track < 2; ++track) {
        const ReadSound read = readWhole(path, track);
        ASSERT_EQ(read.frameCount(), 144'000);
        for (const std::int64_t n : {0, 1599, 1600, 77'777, 143'999})
            EXPECT_EQ(read.at(n), levelAt(SampleKind::float32, n, 0)) << track << ", " << n;
    }
}

} // namespace
} // namespace keldra
