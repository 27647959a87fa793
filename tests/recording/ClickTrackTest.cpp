#include "recording/ClickTrack.h"

#include "doubles/ScriptedMovieWriter.h"
#include "media/Asset.h"
#include "media/AudioTrackReader.h"
#include "media/FileMovieWriter.h"
#include "recording/ClickMix.h"

#include <QDir>
#include <QTemporaryDir>

#include <cmath>
#include <future>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using Mixer = ClickAudioChunkMixer;

float peakOf(const std::vector<float>& samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

TEST(ClickSounds, AreShortAndSilentAtBothEnds) {
    const std::vector<float> soft = Mixer::loadClickWaveform(ClickSoundStyle::soft);
    EXPECT_EQ(soft.size(), 2640u);
    EXPECT_EQ(soft.front(), 0);
    EXPECT_NEAR(soft[48],
                std::exp(-0.072) / 1.5 * 0.32 * (0.62 * std::sin(2 * M_PI * 1.85) + 0.38 * std::sin(2 * M_PI * 0.92)),
                1e-6);
    EXPECT_LT(std::abs(soft.back()), 0.01);

    const std::vector<float> classic = Mixer::loadClickWaveform(ClickSoundStyle::classic);
    EXPECT_NE(classic, soft) << "the sound file is read";
    EXPECT_LE(classic.size(), 4320u);
    EXPECT_NEAR(peakOf(classic), 0.9F, 1e-5);
    EXPECT_EQ(classic.front(), 0);
    EXPECT_EQ(classic.back(), 0);
}

TEST(ClickSounds, AreCutOutFromJustBeforeTheOnset) {
    std::vector<float> sound(20000, 0.001F);
    for (std::size_t i = 9000; i < 9040; ++i)
        sound[i] = 0.2F;
    sound[9030] = -0.5F;
    const std::vector<float> cut = Mixer::trimmed(sound);
    ASSERT_EQ(cut.size(), 4320u);
    // 96 samples before the onset at 9000, and all brought up so that the loudest is 0.9.
    EXPECT_FLOAT_EQ(cut[96 + 30], -0.9F);
    EXPECT_FLOAT_EQ(cut[96], 0.36F);
    EXPECT_FLOAT_EQ(cut[12], 0.0018F * 0.5F) << "half way through the fade in";
    EXPECT_FLOAT_EQ(cut[4320 - 1 - 144], 0.0018F * 0.5F) << "and out";

    EXPECT_TRUE(Mixer::trimmed({}).empty());
    EXPECT_TRUE(Mixer::trimmed(std::vector<float>(100, 0.0F)).empty());
    EXPECT_TRUE(Mixer::trimmed({NAN, NAN}).empty());
    EXPECT_EQ(Mixer::trimmed({0.5F, 0.25F}).size(), 2u);
}

class ClickTrackTest : public testing::Test {
protected:
    static constexpr double start = 1000;

    ClickTrackTest() {
        track.setWaveform(std::vector<float>(1000, 0.25F));
        track.begin(MediaTime(1000, 1));
    }
    MediaTime after(std::int64_t samples) { return MediaTime(1000, 1) + MediaTime(samples, 48000); }
    /// All that was written, each chunk where its stamp says.
    std::vector<float> written() {
        std::vector<float> all;
        for (const AudioBuffer& chunk : script->sounds[0].buffers) {
            EXPECT_EQ(chunk.format(), ClickTrack::format());
            EXPECT_EQ(chunk.time(), after(std::int64_t(all.size())));
            all.insert(all.end(), chunk.samples<float>(), chunk.samples<float>() + chunk.frameCount());
        }
        return all;
    }
    /// First and last sample that is not silent, for each stretch of sound.
    std::vector<std::pair<int, int>> heard() {
        std::vector<std::pair<int, int>> stretches;
        const std::vector<float> all = written();
        for (int i = 0; i < int(all.size()); ++i)
            if (all[std::size_t(i)] != 0) {
                if (stretches.empty() || stretches.back().second != i - 1)
                    stretches.emplace_back(i, i);
                stretches.back().second = i;
            }
        return stretches;
    }

    std::shared_ptr<MovieWriterScript> script = std::make_shared<MovieWriterScript>();
    ScriptedMovieWriter writer{script};
    ClickTrack track{writer.addAudioInput(ClickTrack::format())->get()};
};

TEST_F(ClickTrackTest, IsOnePieceWithItsClicksInPlace) {
    EXPECT_TRUE(track.writeUpTo(after(1)));
    EXPECT_EQ(written().size(), 768u) << "whole chunks, a little ahead";
    track.enqueue(start + 2000.0 / 48000);
    EXPECT_TRUE(track.writeUpTo(after(768)));
    EXPECT_EQ(written().size(), 768u);
    EXPECT_TRUE(track.writeUpTo(after(4000)));
    EXPECT_EQ(written().size(), 6u * 768);
    EXPECT_EQ(heard(), (std::vector<std::pair<int, int>>{{2000, 2999}}));
}

TEST_F(ClickTrackTest, ALateClickSoundsAtTheNextChunk) {
    EXPECT_TRUE(track.writeUpTo(after(769)));
    track.enqueue(start + 100.0 / 48000);
    track.enqueue(start - 5);
    EXPECT_TRUE(track.writeUpTo(after(5000)));
    EXPECT_EQ(heard(), (std::vector<std::pair<int, int>>{{1536, 2535}}));
    EXPECT_FLOAT_EQ(written()[1536], 0.5F) << "clicks add up";
}

TEST(ClickTrackStart, BeforeTheFirstFrameNothingIsWrittenOrKept) {
    const auto script = std::make_shared<MovieWriterScript>();
    ScriptedMovieWriter writer(script);
    ClickTrack track(writer.addAudioInput(ClickTrack::format())->get());
    track.setWaveform({1, 1});
    track.enqueue(1000);
    EXPECT_TRUE(track.writeUpTo(MediaTime(1001, 1)));
    EXPECT_TRUE(script->sounds[0].buffers.empty());
    track.begin(MediaTime(999, 1));
    EXPECT_TRUE(track.writeUpTo(MediaTime(1001, 1)));
    for (const AudioBuffer& chunk : script->sounds[0].buffers)
        EXPECT_EQ(peakOf({chunk.samples<float>(), chunk.samples<float>() + chunk.frameCount()}), 0);
}

/// A real take with such sound tracks, a second long, each a ramp that no two places share.
class ClickMixTest : public testing::Test {
protected:
    std::string makeTake(const std::vector<AudioFormat>& sounds) {
        const std::string path = folder.filePath("take.mov").toStdString();
        SerialQueue answer("test.answer");
        FileMovieWriter file(path);
        VideoTrackSettings video{64, 48, 500'000, 30, 60};
        MovieWriterVideoInput& pictures = *file.addVideoInput(video);
        std::vector<MovieWriterAudioInput*> inputs;
        for (const AudioFormat& format : sounds)
            inputs.push_back(&file.addAudioInput(format)->get());
        EXPECT_TRUE(file.startWriting());
        file.startSession(MediaTime::zero());
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 64, 48);
        for (int y = 0; y < 48; ++y)
            std::memset(picture.mutableRow(0, y), 5 * y, 256);
        EXPECT_TRUE(pictures.append(picture, MediaTime::zero()));
        for (std::size_t i = 0; i < sounds.size(); ++i) {
            AudioBuffer sound = AudioBuffer::allocate(sounds[i], 48000, MediaTime::zero());
            for (std::int64_t n = 0; n < sound.byteCount(); ++n)
                sound.mutableBytes()[n] = std::byte(n % 3 == 2 ? n % 64 : n * 7 % 251);
            if (sounds[i].kind == SampleKind::float32)
                for (std::int64_t n = 0; n < 48000; ++n)
                    sound.mutableSamples<float>()[n] = float(n) / 96000;
            EXPECT_TRUE(inputs[i]->append(sound));
        }
        std::promise<bool> finished;
        file.finishWriting(MediaTime(1, 1), answer,
                           [&](const Result<void>& result) { finished.set_value(bool(result)); });
        EXPECT_TRUE(finished.get_future().get());
        return path;
    }
    static std::vector<float> read(const std::string& path, std::size_t number) {
        const auto asset = Asset::open(path);
        const auto tracks = (*asset)->tracks(MediaKind::audio);
        std::vector<float> samples;
        if (number >= tracks.size())
            return samples;
        auto reader = *AudioTrackReader::open(*asset, tracks[number].index, {});
        for (auto part = reader->next(); part && *part; part = reader->next())
            samples.insert(samples.end(), (**part).samples<float>(),
                           (**part).samples<float>() + (**part).frameCount() * (**part).format().channelCount);
        return samples;
    }

    QTemporaryDir folder;
};

const AudioFormat voice{SampleKind::int24, 48000, 2};
const AudioFormat system{SampleKind::float32, 48000, 1};

TEST_F(ClickMixTest, SumsClicksIntoTheFirstSoundAndLeavesTheOthers) {
    const std::string path = makeTake({voice, system});
    const std::vector<float> before = read(path, 0);
    const std::vector<float> otherBefore = read(path, 1);
    ASSERT_EQ(before.size(), 96000u);
    ASSERT_TRUE(mixClicksIntoMovie(path, {0.5, 0.25, 7, -1}, ClickSoundStyle::soft));

    const std::vector<float> click = Mixer::softWaveform();
    const std::vector<float> after = read(path, 0);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t n = 0; n < 48000; ++n) {
        float added = 0;
        for (const std::size_t at : {12000u, 24000u})
            if (n >= at && n < at + click.size())
                added += click[n - at] * 0.5F;
        for (std::size_t channel = 0; channel < 2; ++channel)
            ASSERT_NEAR(after[2 * n + channel], std::clamp(before[2 * n + channel] + added, -1.0F, 1.0F), 2e-7) << n;
    }
    EXPECT_EQ(read(path, 1), otherBefore);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"take.mov"});
}

TEST_F(ClickMixTest, MakesTheOnlySoundOfASilentMovie) {
    const std::string path = makeTake({});
    ASSERT_TRUE(mixClicksIntoMovie(path, {0.99, 0.1}, ClickSoundStyle::classic));
    const std::vector<float> sound = read(path, 0);
    ASSERT_EQ(sound.size(), 48000u);
    const std::vector<float> click = Mixer::loadClickWaveform(ClickSoundStyle::classic);
    for (std::size_t n = 0; n < click.size(); ++n)
        ASSERT_FLOAT_EQ(sound[4800 + n], click[n] * 0.5F);
    EXPECT_FLOAT_EQ(sound[47520 + 200], click[200] * 0.5F) << "cut at the end, not moved";
    EXPECT_EQ((*Asset::open(path))->duration(), MediaTime(1, 1));
}

TEST_F(ClickMixTest, LeavesTheFileAloneWhenNothingIsToBeMixedOrItCannotBe) {
    const std::string path = makeTake({{SampleKind::int16, 44100, 1}});
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    EXPECT_TRUE(mixClicksIntoMovie(path, {5, -1}, ClickSoundStyle::soft));
    EXPECT_FALSE(mixClicksIntoMovie(path, {0.5}, ClickSoundStyle::soft)) << "sound at another rate";
    EXPECT_FALSE(mixClicksIntoMovie(path + ".gone", {0.5}, ClickSoundStyle::soft));
    file.seek(0);
    EXPECT_EQ(file.readAll(), before);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"take.mov"});
}

} // namespace
} // namespace keldra
