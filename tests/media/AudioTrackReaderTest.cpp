#include "media/AudioTrackReader.h"

#include "TestSound.h"

#include <limits>
#include <random>

namespace keldra {
namespace {

using namespace test;

struct SoundRow {
    const char* name;
    const char* file;
    std::string arguments;
    /// Beyond what the codec's own noise explains, seeking and reading must agree.
    float tolerance = 0;
    int channels = 2;
    /// How late the container lets the sound begin, where it forgets the codec's run-in.
    int lag = 0;
};

class AudioTrackReaderFiles : public testing::TestWithParam<SoundRow> {
protected:
    void SetUp() override {
        path = folder / GetParam().file;
        sung = glidingTones(seconds, 48000, GetParam().channels);
        writeWav(folder / "sung.wav", sung);
        runFfmpeg("-i '" + (folder / "sung.wav") + "' " + GetParam().arguments + " '" + path + "'");
        whole = readWhole(path);
    }

    static constexpr double seconds = 8;
    TemporaryFolder folder;
    std::string path;
    TestSound sung;
    ReadSound whole;
};

TEST_P(AudioTrackReaderFiles, HoldTheSoundInItsPlaceWithoutAHole) {
    EXPECT_EQ(whole.error, "");
    EXPECT_NEAR(double(whole.first), 0, GetParam().lag == 0 ? 0 : 150);
    EXPECT_TRUE(whole.holes.empty()) << whole.holes.size() << ", the first at " << whole.holes.front().first;
    EXPECT_EQ(whole.channelCount, GetParam().channels);
    EXPECT_NEAR(double(whole.frameCount()), double(sung.frameCount()), 2400);
    EXPECT_EQ(lagOf(sung, whole, 1500), GetParam().lag);
    if (GetParam().tolerance == 0) {
        ASSERT_EQ(whole.frameCount(), sung.frameCount());
        for (std::size_t i = 0; i < sung.samples.size(); ++i)
            ASSERT_NEAR(whole.samples[i], sung.samples[i], 1.0 / 32000) << "sample " << i;
    }
}

TEST_P(AudioTrackReaderFiles, SoundTheSameAfterASeek) {
    const auto reader = openSound(path);
    ASSERT_TRUE(reader);
    std::mt19937 random(7);
    std::vector<std::int64_t> wanted{100000, 100001, 102000, 1, 0, 383000, 1023, 47999};
    for (int i = 0; i < 25; ++i)
        wanted.push_back(std::int64_t(random() % (7 * 48000 + 40000)));
    for (const std::int64_t position : wanted) {
        const auto sought = reader->seek(MediaTime(position, 48000));
        ASSERT_TRUE(sought) << sought.error().message;
        const ReadSound heard = readOn(*reader, 3000);
        ASSERT_EQ(heard.first, std::max(position, whole.first));
        ASSERT_EQ(std::min<std::int64_t>(heard.frameCount(), 3000),
                  std::min<std::int64_t>(whole.end() - position, 3000));
        for (std::int64_t n = 0; n < heard.frameCount(); ++n)
            for (int channel = 0; channel < heard.channelCount; ++channel)
                ASSERT_NEAR(heard.at(n, channel), whole.onLine(heard.first + n, channel), GetParam().tolerance)
                    << "frame " << n << " after " << position;
    }
}

INSTANTIATE_TEST_SUITE_P(
    , AudioTrackReaderFiles,
    testing::Values(
        SoundRow{"wav16", "a.wav", "-c:a pcm_s16le"}, SoundRow{"wav24", "a.wav", "-c:a pcm_s24le"},
        SoundRow{"wavFloat", "a.wav", "-c:a pcm_f32le"}, SoundRow{"wavFiveOne", "a.wav", "-c:a pcm_s16le", 0, 6},
        SoundRow{"flac", "a.flac", "-c:a flac"}, SoundRow{"pcmInMov", "a.mov", "-c:a pcm_s24le"},
        SoundRow{"alac", "a.m4a", "-c:a alac"}, SoundRow{"flacInMatroska", "a.mkv", "-c:a flac"},
        SoundRow{"pcmInMatroska", "a.mkv", "-c:a pcm_s16le"}, SoundRow{"aac", "a.m4a", "-c:a aac -aac_pns 0", 1e-6F},
        SoundRow{"aacFiveOne", "a.mp4", "-c:a aac -aac_pns 0", 1e-6F, 6},
        SoundRow{"aacInMatroska", "a.mkv", "-c:a aac -aac_pns 0", 1e-6F, 2, 1024},
        SoundRow{"aacInTransportStream", "a.ts", "-c:a aac -aac_pns 0", 1e-6F, 2, 1024},
        SoundRow{"adts", "a.aac", "-c:a aac -aac_pns 0", 1e-6F, 2, 1024},
        SoundRow{"mp3", "a.mp3", "-c:a libmp3lame -b:a 128k", 1e-5F},
        SoundRow{"mp3Variable", "a.mp3", "-c:a libmp3lame -q:a 5", 1e-5F},
        SoundRow{"mp3InMp4", "a.mp4", "-c:a libmp3lame -b:a 64k", 1e-5F},
        SoundRow{"opus", "a.opus", "-c:a libopus -b:a 96k", 2e-3F},
        SoundRow{"opusInWebm", "a.webm", "-c:a libopus -b:a 96k", 2e-3F},
        SoundRow{"vorbis", "a.ogg", "-c:a libvorbis", 1e-5F},
        SoundRow{"vorbisInMatroska", "a.mkv", "-c:a libvorbis", 1e-5F, 2, 128},
        SoundRow{"ac3", "a.ac3", "-c:a ac3", 1e-4F, 2, 256}, SoundRow{"ac3InMp4", "a.mp4", "-c:a ac3", 1e-4F, 6}),
    [](const auto& row) { return row.param.name; });

TEST(AudioTrackReader, LeavesALateStartLate) {
    const TemporaryFolder folder;
    writeWav(folder / "click.wav", clicks(1, {4800}));
    for (const std::string file : {"a.mov", "a.mp4", "a.mkv", "a.ts"}) {
        const std::string codec = file == "a.mov" ? "pcm_f32le" : "ac3";
        runFfmpeg(paintedSource(10, 2) + "-itsoffset 0.5 -i '" + (folder / "click.wav") + "' -c:v mpeg4 -c:a " + codec +
                  " '" + (folder / file) + "'");
        const ReadSound heard = readWhole(folder / file);
        // The ffmpeg program states delays in milliseconds, and lets AC-3 begin its run-in of 256 samples sooner.
        EXPECT_NEAR(double(heard.first), file == "a.mov" ? 24000 : 24000 - 256, 48) << file;
        EXPECT_NEAR(double(heard.first + loudestFrame(heard)), 24000 + 4800, 48) << file;
    }
}

TEST(AudioTrackReader, HonoursAnEditListThatBeginsInsideAPacket) {
    const TemporaryFolder folder;
    const TestSound sung = glidingTones(4);
    writeWav(folder / "sung.wav", sung);
    runFfmpeg("-i '" + (folder / "sung.wav") + "' -c:a aac '" + (folder / "whole.m4a") + "'");
    runFfmpeg("-ss 1.01 -i '" + (folder / "whole.m4a") + "' -c copy '" + (folder / "cut.m4a") + "'");
    const ReadSound heard = readWhole(folder / "cut.m4a");
    TestSound rest{48000, 1, {sung.samples.begin() + 48480, sung.samples.end()}};
    EXPECT_EQ(heard.first, 0);
    EXPECT_EQ(lagOf(rest, heard, 1500), 0);
}

TEST(AudioTrackReader, KeepsHolesAndClosesSeams) {
    const TemporaryFolder folder;
    const TestSound sung = glidingTones(4);
    writeWav(folder / "sung.wav", sung);
    // Frames of 1000 samples, of which those from 1.5 s to 2 s are missing.
    for (const char* codec : {"pcm_f32le", "flac"}) {
        runFfmpeg("-i '" + (folder / "sung.wav") + "' -af \"asetnsamples=1000,aselect='not(between(t,1.5,1.9999))'\" " +
                  "-frame_size 1000 -c:a " + codec + " '" + (folder / "a.mkv") + "'");
        const ReadSound heard = readWhole(folder / "a.mkv");
        ASSERT_EQ(heard.holes.size(), 1u) << codec;
        EXPECT_NEAR(double(heard.holes[0].first), 72000, 48) << codec;
        EXPECT_NEAR(double(heard.holes[0].second), 96000, 48) << codec;
        EXPECT_EQ(lagOf(sung, heard, 50), 0);
        for (std::int64_t n = 100000; n < 190000; ++n)
            ASSERT_NEAR(heard.at(n), sung.at(n), 1e-4) << codec << " " << n;
    }
}

TEST(AudioTrackReader, LeavesOutWhatIsDamagedAndStaysInTime) {
    const TemporaryFolder folder;
    const TestSound sung = glidingTones(6);
    writeWav(folder / "sung.wav", sung);
    for (const auto& [file, arguments] : std::vector<std::pair<std::string, std::string>>{
             {"a.m4a", "-c:a aac"}, {"a.mkv", "-c:a flac"}, {"a.mp4", "-c:a ac3"}, {"a.opus", "-c:a libopus"}}) {
        runFfmpeg("-i '" + (folder / "sung.wav") + "' " + arguments + " '" + (folder / file) + "'");
        std::vector<char> bytes = bytesOf(folder / file);
        const ReadSound before = readWhole(folder / file);
        std::mt19937 random(3);
        for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 900; ++i)
            bytes[i] = char(random());
        writeBytes(folder / file, bytes);
        const ReadSound after = readWhole(folder / file);
        EXPECT_EQ(after.error, "") << file;
        EXPECT_NEAR(double(after.frameCount()), double(before.frameCount()), 4800) << file;
        for (const std::int64_t from : {std::int64_t(10000), before.frameCount() - 40000})
            for (std::int64_t n = from; n < from + 20000; ++n)
                ASSERT_NEAR(after.at(n), before.at(n), 0.02) << file << " " << n;
    }
}

TEST(AudioTrackReader, ConvertsAStreamThatChangesItsFormHalfWay) {
    const TemporaryFolder folder;
    writeWav(folder / "a.wav", glidingTones(8, 48000, 2));
    writeWav(folder / "b.wav", glidingTones(1, 24000, 1));
    runFfmpeg("-i '" + (folder / "a.wav") + "' -c:a ac3 '" + (folder / "a.ac3") + "'");
    runFfmpeg("-i '" + (folder / "b.wav") + "' -ar 32000 -c:a ac3 '" + (folder / "b.ac3") + "'");
    std::vector<char> bytes = bytesOf(folder / "a.ac3");
    const std::vector<char> second = bytesOf(folder / "b.ac3");
    bytes.insert(bytes.end(), second.begin(), second.end());
    writeBytes(folder / "both.ac3", bytes);
    const ReadSound heard = readWhole(folder / "both.ac3");
    EXPECT_EQ(heard.error, "");
    EXPECT_EQ(std::pair(heard.sampleRate, heard.channelCount), std::pair(48000, 2));
    EXPECT_NEAR(double(heard.frameCount()), 9 * 48000, 6000);
    // Past the seam it sounds as b.wav does, at half a second.
    double energy = 0;
    for (std::int64_t n = 408000; n < 412000; ++n)
        energy += std::pow(double(heard.at(n, 0)), 2) / 4000;
    EXPECT_GT(energy, 0.001);
}

TEST(AudioTrackReader, MixesToSixteenBitMono) {
    const TemporaryFolder folder;
    using Row = std::pair<int, std::string>;
    for (const auto& [channels, codec] :
         {Row{1, "pcm_s16le"}, {2, "pcm_s16le"}, {1, "pcm_f32le"}, {2, "pcm_f32le"}, {2, "pcm_s24le"}}) {
        const TestSound sung = glidingTones(0.5, 48000, channels);
        writeWav(folder / "sung.wav", sung);
        runFfmpeg("-i '" + (folder / "sung.wav") + "' -c:a " + codec + " '" + (folder / "a.wav") + "'");
        const auto reader = openSound(folder / "a.wav", {SampleKind::int16, true});
        ASSERT_TRUE(reader);
        EXPECT_EQ(reader->format(), (AudioFormat{SampleKind::int16, 48000, 1}));
        std::int64_t n = 0;
        while (const auto buffer = *reader->next())
            for (std::int64_t i = 0; i < buffer->frameCount(); ++i, ++n) {
                const float mean = channels == 1 ? sung.at(n) : (sung.at(n, 0) + sung.at(n, 1)) / 2;
                ASSERT_NEAR(buffer->samples<std::int16_t>()[i], mean * 32768, 2) << codec << " " << n;
            }
        EXPECT_EQ(n, sung.frameCount());
    }
}

TEST(AudioTrackReader, LimitsWhatSixteenBitsDoNotHold) {
    const TemporaryFolder folder;
    const float infinite = std::numeric_limits<float>::infinity();
    writeWav(folder / "a.wav", {48000, 1, {NAN, infinite, -infinite, 5, -5, 0.99999F, -1, 1e-5F}});
    const auto reader = openSound(folder / "a.wav", {SampleKind::int16, true});
    ASSERT_TRUE(reader);
    const auto buffer = reader->next();
    ASSERT_TRUE(buffer && *buffer);
    const auto* samples = (**buffer).samples<std::int16_t>();
    EXPECT_EQ(std::vector<int>(samples, samples + (**buffer).frameCount()),
              (std::vector<int>{0, 32767, -32768, 32767, -32768, 32767, -32768, 0}));
}

TEST(AudioTrackReader, NamesWhatIsMissing) {
    const TemporaryFolder folder;
    runFfmpeg(paintedSource(10, 0.5) + "-c:v mpeg4 '" + (folder / "a.mov") + "'");
    const auto asset = Asset::open(folder / "a.mov");
    ASSERT_TRUE(asset);
    EXPECT_EQ(AudioTrackReader::open(*asset, 0, {}).error().message, "a.mov has no sound track 0");
    std::filesystem::remove(folder / "a.mov");
    EXPECT_EQ(AudioTrackReader::open(*asset, 0, {}).error().message, "a.mov: No such file or directory");
}

} // namespace
} // namespace keldra
