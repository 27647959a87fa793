#include "media/MixReader.h"

#include "TestSound.h"

#include <random>

namespace keldra {
namespace {

using namespace test;

class MixReaderTest : public testing::Test {
protected:
    AssetPtr file(const std::string& name, const TestSound& sound) {
        writeWav(folder / name, sound);
        const auto asset = Asset::open(folder / name);
        EXPECT_TRUE(asset) << (asset ? "" : asset.error().message);
        return asset ? *asset : nullptr;
    }

    static void place(CompositionTrack& track, const AssetPtr& asset, const MediaTimeRange& source, MediaTime at) {
        const auto placed = track.insertTimeRange(source, asset, 0, at);
        ASSERT_TRUE(placed) << placed.error().message;
    }

    /// Everything from `from` on, read in pieces of odd lengths.
    static TestSound read(MixReader& reader, MediaTime from = MediaTime::zero(), unsigned seed = 1) {
        TestSound sound{reader.format().sampleRate, reader.format().channelCount, {}};
        reader.seek(from);
        std::mt19937 random(seed);
        std::int64_t position = firstSampleAt(from, sound.sampleRate);
        for (;;) {
            const auto buffer = reader.next(1 + std::int64_t(random() % 3000));
            EXPECT_TRUE(buffer) << (buffer ? "" : buffer.error().message);
            if (!buffer || !*buffer)
                return sound;
            EXPECT_EQ(buffer->time(), MediaTime(position, sound.sampleRate));
            position += buffer->frameCount();
            const auto* samples = buffer->samples<float>();
            sound.samples.insert(sound.samples.end(), samples,
                                 samples + buffer->frameCount() * std::int64_t(sound.channelCount));
        }
    }
    TestSound read(std::optional<AudioMix> mix = std::nullopt, MixReader::Options options = {48000, 1}) {
        MixReader reader(composition, std::move(mix), options);
        return read(reader);
    }

    static void expectSame(const TestSound& a, const TestSound& b, float tolerance, std::int64_t firstOfB = 0) {
        ASSERT_EQ(a.frameCount(), b.frameCount() - firstOfB);
        for (std::int64_t n = 0; n < a.frameCount(); ++n)
            for (int channel = 0; channel < a.channelCount; ++channel)
                ASSERT_NEAR(a.at(n, channel), b.at(n + firstOfB, channel), tolerance) << "frame " << n + firstOfB;
    }

    TemporaryFolder folder;
    std::shared_ptr<Composition> composition = std::make_shared<Composition>();
};

TEST_F(MixReaderTest, SumsTracksWithTheirGainsAndDoesNotClip) {
    CompositionTrack& first = composition->addTrack(MediaKind::audio);
    CompositionTrack& second = composition->addTrack(MediaKind::audio);
    const AssetPtr ones = file("ones.wav", {48000, 1, std::vector<float>(48000, 0.75F)});
    const AssetPtr halves = file("halves.wav", {48000, 1, std::vector<float>(48000, 0.5F)});
    // 0.75 from sample 10 to 30, 0.5 from 20 to 50.
    place(first, ones, {MediaTime::zero(), MediaTime(20, 48000)}, MediaTime(10, 48000));
    place(second, halves, {MediaTime(7, 48000), MediaTime(30, 48000)}, MediaTime(20, 48000));
    AudioMix mix{{AudioMixParameters(1), AudioMixParameters(2)}};
    mix.parameters[0].setVolume(2, MediaTime::zero());
    mix.parameters[1].setVolumeRamp(0, 1, {MediaTime(20, 48000), MediaTime(20, 48000)});
    const TestSound heard = read(mix);
    ASSERT_EQ(heard.frameCount(), 50);
    for (int n = 0; n < 50; ++n) {
        const float one = n >= 10 && n < 30 ? 1.5F : 0;
        const float other = n < 20 ? 0 : n < 40 ? 0.5F * float(n - 20) / 20 : 0.5F;
        EXPECT_NEAR(heard.at(n), one + other, 1e-6) << n;
    }
}

TEST_F(MixReaderTest, PutsEachPieceOnItsSampleAndSilenceBetween) {
    CompositionTrack& track = composition->addTrack(MediaKind::audio);
    const AssetPtr asset = file("clicks.wav", clicks(2, {1000, 50000}));
    place(track, asset, {MediaTime::zero(), MediaTime(1, 10)}, MediaTime(1, 2));
    // Its first frame is the first that is not before 1.00001 s.
    place(track, asset, {MediaTime(50000, 48000), MediaTime(1, 10)}, MediaTime(100001, 100000));
    place(track, asset, {MediaTime(900, 48000), MediaTime(5, 1)}, MediaTime(2, 1));
    const TestSound heard = read();
    ASSERT_EQ(heard.frameCount(), 7 * 48000);
    std::vector<std::int64_t> found;
    for (std::int64_t n = 0; n < heard.frameCount(); ++n)
        if (heard.at(n) != 0)
            found.push_back(n);
    EXPECT_EQ(found, (std::vector<std::int64_t>{24000 + 1000, 48001, 96000 + 100, 96000 + 49100}));
}

struct RateRow {
    const char* name;
    int sourceRate;
    int rate;
};

class MixReaderRates : public MixReaderTest, public testing::WithParamInterface<RateRow> {};

TEST_P(MixReaderRates, ResampleInPhaseAndTheSameHoweverCutAndSought) {
    const auto [name, sourceRate, rate] = GetParam();
    const auto tone = [](double t) { return float(0.5 * std::sin(2 * M_PI * 1000 * t)); };
    TestSound sung{sourceRate, 1, {}};
    for (int n = 0; n < 3 * sourceRate; ++n)
        sung.samples.push_back(tone(double(n) / sourceRate));
    const AssetPtr asset = file("tone.wav", sung);
    // The same stretch whole, and cut where its ends are rounded each for itself to 1/60000 s.
    const MediaTime at(30011, 60000);
    const MediaTime in(7001, 60000);
    place(composition->addTrack(MediaKind::audio), asset, {in, MediaTime(2, 1)}, at);
    const TestSound whole = read(std::nullopt, {rate, 1});
    const double offset = in.seconds() - at.seconds();
    // A sample of the line at most, where rates are equal; else the phase is exact to a fraction of a sample.
    const double worst = sourceRate == rate ? 0.5 * 2 * M_PI * 1000 / rate + 1e-3 : 0.006;
    for (std::int64_t n = rate; n < 2 * rate; ++n)
        ASSERT_NEAR(whole.at(n), tone(double(n) / rate + offset), worst) << n;

    auto cut = std::make_shared<Composition>();
    CompositionTrack& track = cut->addTrack(MediaKind::audio);
    std::vector<int> ends{0, 7919, 7920, 20011, 59999, 90017, 120000};
    for (std::size_t i = 1; i < ends.size(); ++i) {
        const MediaTime before(ends[i - 1], 60000);
        const int rounding = i % 3 == 1 && i > 1 ? 1 : 0;
        place(track, asset, {in + before + MediaTime(rounding, 60000), MediaTime(ends[i] - ends[i - 1], 60000)},
              at + before);
    }
    MixReader reader(cut, std::nullopt, {rate, 1});
    expectSame(read(reader), whole, 1e-4F);
    for (const MediaTime from : {MediaTime(3, 2), MediaTime(41234, 60000), MediaTime(2, 1), MediaTime(7, 3)})
        expectSame(read(reader, from, 5), whole, 1e-4F, firstSampleAt(from, rate));
}

INSTANTIATE_TEST_SUITE_P(, MixReaderRates,
                         testing::Values(RateRow{"same", 48000, 48000}, RateRow{"cdToStudio", 44100, 48000},
                                         RateRow{"studioToCd", 48000, 44100}, RateRow{"doubled", 24000, 48000},
                                         RateRow{"halved", 96000, 48000}, RateRow{"odd", 44056, 48000},
                                         RateRow{"telephone", 8000, 48000}),
                         [](const auto& row) { return row.param.name; });

TEST_F(MixReaderTest, MakesChannelsFitWithoutGettingLouder) {
    struct Row {
        int from;
        int to;
        /// Each channel of the file holds one of these.
        std::vector<float> levels;
        std::vector<float> wanted;
    };
    // 5.1 to stereo: left takes 1 of L, 0.7071 of C and of Ls, in such shares that the sum is 1.
    const float share = 1 / (1 + 2 * 0.70711F);
    const std::vector<Row> rows{
        {1, 2, {0.5F}, {0.5F, 0.5F}},
        {2, 1, {0.5F, 0.25F}, {0.375F}},
        {2, 2, {0.5F, -0.25F}, {0.5F, -0.25F}},
        {6, 2, {0.5F, 0, 0, 0, 0, 0}, {0.5F * share, 0}},
        {6, 2, {0, 0, 0.5F, 0, 0, 0}, {0.35355F * share, 0.35355F * share}},
        {64, 2, std::vector<float>(64, 0.25F), {0.25F, 0.25F}},
    };
    for (const Row& row : rows) {
        TestSound sound{48000, row.from, {}};
        for (int n = 0; n < 4800; ++n)
            sound.samples.insert(sound.samples.end(), row.levels.begin(), row.levels.end());
        if (row.from == 6) {
            // Only the extended form of the header says which channel is which.
            writeWav(folder / "plain.wav", sound);
            runFfmpeg("-i '" + (folder / "plain.wav") + "' -channel_layout 5.1 -c:a pcm_f32le '" + (folder / "a.wav") +
                      "'");
        } else {
            writeWav(folder / "a.wav", sound);
        }
        const auto asset = Asset::open(folder / "a.wav");
        ASSERT_TRUE(asset);
        composition = std::make_shared<Composition>();
        place(composition->addTrack(MediaKind::audio), *asset, {MediaTime::zero(), MediaTime(1, 10)},
              MediaTime::zero());
        const TestSound heard = read(std::nullopt, {48000, row.to});
        ASSERT_EQ(heard.channelCount, row.to);
        for (int channel = 0; channel < row.to; ++channel)
            EXPECT_NEAR(heard.at(2000, channel), row.wanted[std::size_t(channel)], 1e-3)
                << row.from << " to " << row.to << ", channel " << channel;
    }
}

TEST_F(MixReaderTest, PassesOverWhatIsNoNumber) {
    TestSound sound{48000, 1, std::vector<float>(1000, 0.5F)};
    sound.samples[100] = NAN;
    sound.samples[200] = INFINITY;
    place(composition->addTrack(MediaKind::audio), file("a.wav", sound), {MediaTime::zero(), MediaTime(1000, 48000)},
          MediaTime::zero());
    const TestSound heard = read();
    EXPECT_EQ(heard.at(100), 0);
    EXPECT_EQ(heard.at(200), 0);
    EXPECT_EQ(heard.at(300), 0.5F);
}

TEST_F(MixReaderTest, OpensFilesOnlyWhenTheyAreHeardAndNamesOneThatIsGone) {
    CompositionTrack& track = composition->addTrack(MediaKind::audio);
    const AssetPtr here = file("here.wav", {48000, 1, std::vector<float>(4800, 0.5F)});
    const AssetPtr gone = file("gone.wav", {48000, 1, std::vector<float>(4800, 0.5F)});
    std::filesystem::remove(folder / "gone.wav");
    for (int i = 0; i < 1000; ++i)
        place(track, i == 999 ? gone : here, {MediaTime::zero(), MediaTime(1, 20)}, MediaTime(i, 10));
    MixReader reader(composition, std::nullopt, {48000, 1});
    reader.seek(MediaTime(99, 1));
    const auto heard = reader.next(2400);
    ASSERT_TRUE(heard) << heard.error().message;
    EXPECT_EQ(heard->samples<float>()[1000], 0.5F);
    reader.seek(MediaTime(999, 10));
    const auto failed = reader.next(2400);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().message, "gone.wav: No such file or directory");
    // Put back, it plays from the same place.
    file("gone.wav", {48000, 1, std::vector<float>(4800, 0.25F)});
    const auto again = reader.next(2400);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->time(), MediaTime(999, 10));
    EXPECT_EQ(again->samples<float>()[1000], 0.25F);
}

} // namespace
} // namespace keldra
