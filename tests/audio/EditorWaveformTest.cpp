#include "audio/EditorWaveformGenerator.h"
#include "audio/WaveformPeaks.h"
#include "media/TestSound.h"

#include <memory>

namespace keldra {
namespace {

using namespace test;

float heightOf(int peak) {
    WaveformPeaks peaks(1, 1);
    const auto sample = std::int16_t(peak);
    peaks.add(0, &sample, 1);
    return peaks.heights().at(0);
}

TEST(WaveformPeaks, MapDecibelsFromTheFloorToFullScale) {
    EXPECT_EQ(heightOf(32767), 1);
    EXPECT_EQ(heightOf(-32768), 1);
    EXPECT_NEAR(heightOf(16384), 0.888, 0.001);
    EXPECT_NEAR(heightOf(66), 0.0015, 0.001);
    EXPECT_EQ(heightOf(60), 0);
    EXPECT_EQ(heightOf(0), 0);
}

TEST(WaveformPeaks, PutSamplesIntoTheBucketsOfTheirTimes) {
    // Two seconds in eight buckets of 2000 samples each.
    struct Row {
        std::int64_t position;
        int bucket;
    };
    for (const Row& row : std::vector<Row>{
             {0, 0}, {1999, 0}, {2000, 1}, {15999, 7}, {16000, 7}, {16001, -1}, {-1, -1}, {1'000'000'000'000, -1}}) {
        WaveformPeaks peaks(8, 2);
        const std::int16_t sample = 32767;
        peaks.add(row.position, &sample, 1);
        for (int bucket = 0; bucket < 8; ++bucket)
            EXPECT_EQ(peaks.heights()[std::size_t(bucket)], bucket == row.bucket ? 1 : 0) << row.position;
    }
    // Whatever the cut and however odd the length, each sample is in the bucket that its time says.
    for (const double duration : {0.0007, 0.1, 1.0 / 3, 2.7182818, 100.0})
        for (const int count : {1, 7, 1000, 2400}) {
            WaveformPeaks whole(count, duration);
            WaveformPeaks single(count, duration);
            std::vector<std::int16_t> samples;
            for (int n = 0; n < 30000; ++n)
                samples.push_back(std::int16_t((n * 7919) % 65536 - 32768));
            whole.add(-5, samples.data(), std::int64_t(samples.size()));
            for (std::size_t n = 0; n < samples.size(); ++n)
                single.add(std::int64_t(n) - 5, &samples[n], 1);
            EXPECT_EQ(whole.heights(), single.heights()) << duration << " in " << count;
        }
}

TEST(EditorWaveform, GivesThePeakOfAStretch) {
    const EditorWaveform waveform{{0.1F, 0.5F, 0.2F, 0.9F}, 4};
    struct Row {
        double from;
        double to;
        double duration;
        float peak;
    };
    for (const Row& row : std::vector<Row>{{0, 4, 4, 0.9F},
                                           {0, 1, 4, 0.1F},
                                           {0.4, 0.6, 4, 0.1F},
                                           {0.5, 1.5, 4, 0.5F},
                                           {2, 3, 4, 0.2F},
                                           {3.99, 4, 4, 0.9F},
                                           {4, 5, 4, 0.9F},
                                           {-3, -1, 4, 0.1F},
                                           {0, 1, 2, 0.5F},
                                           {1, 1, 4, 0},
                                           {2, 1, 4, 0},
                                           {0, 1, 0, 0},
                                           {0, NAN, 4, 0}})
        EXPECT_EQ(waveform.peak(row.from, row.to, row.duration), row.peak) << row.from << " to " << row.to;
    EXPECT_EQ(EditorWaveform::empty().peak(0, 1, 1), 0);
}

class EditorWaveformGeneratorTest : public testing::Test {
protected:
    Result<EditorWaveform> generate(const std::string& name, std::optional<int> buckets, double duration) {
        auto promise = std::make_shared<std::promise<Result<EditorWaveform>>>();
        generator->generate(folder / name, buckets, duration, answer,
                            [promise](Result<EditorWaveform> waveform) { promise->set_value(std::move(waveform)); });
        auto future = promise->get_future();
        if (future.wait_for(std::chrono::seconds(60)) != std::future_status::ready)
            return fail(Error{"test", 1, "There was no answer.", {}});
        return future.get();
    }

    TemporaryFolder folder;
    SerialQueue answer{"test.answer"};
    std::unique_ptr<EditorWaveformGenerator> generator = std::make_unique<EditorWaveformGenerator>();
};

/// A 400 Hz tone of full scale times the loudness of each tenth of a second.
TestSound steps(const std::vector<float>& loudness, int sampleRate = 48000, int channelCount = 1) {
    TestSound sound{sampleRate, channelCount, {}};
    for (int n = 0; n < int(loudness.size()) * sampleRate / 10; ++n)
        for (int channel = 0; channel < channelCount; ++channel)
            sound.samples.push_back(loudness[std::size_t(n / (sampleRate / 10))] *
                                    float(std::sin(2 * M_PI * 400 * n / sampleRate)));
    return sound;
}

float height(float loudness) {
    return loudness > 0 ? std::clamp((20 * std::log10(loudness) + 54) / 54, 0.0F, 1.0F) : 0;
}

TEST_F(EditorWaveformGeneratorTest, ShowsTheLoudnessOverTime) {
    const std::vector<float> loudness{0.5F, 0.05F, 0.9F, 0, 0.25F, 0.01F};
    for (const int rate : {8000, 44100, 48000, 96000})
        for (const int channels : {1, 2}) {
            writeWav(folder / "a.wav", steps(loudness, rate, channels));
            // The file ends at 0.6 s of 0.8.
            const auto waveform = generate("a.wav", 80, 0.8);
            ASSERT_TRUE(waveform) << waveform.error().message;
            ASSERT_EQ(waveform->samples.size(), 80u);
            EXPECT_EQ(waveform->duration, 0.8);
            for (std::size_t bucket = 0; bucket < 80; ++bucket) {
                const bool isEdge = bucket % 10 == 0 || bucket % 10 == 9;
                const float wanted = bucket < 60 ? height(loudness[bucket / 10]) : 0;
                if (!isEdge) {
                    EXPECT_NEAR(waveform->samples[bucket], wanted, 0.01) << rate << " Hz, bucket " << bucket;
                }
            }
        }
}

TEST_F(EditorWaveformGeneratorTest, ALongFileHasNoSeam) {
    std::vector<float> loudness;
    for (int tenth = 0; tenth < 660; ++tenth)
        loudness.push_back(float(0.5 + 0.3 * std::sin(tenth * 0.05)));
    for (const int rate : {8000, 44100}) {
        writeWav(folder / "long.wav", steps(loudness, rate));
        const auto waveform = generate("long.wav", 660, 66);
        ASSERT_TRUE(waveform) << waveform.error().message;
        for (std::size_t bucket = 0; bucket < 660; ++bucket)
            EXPECT_NEAR(waveform->samples[bucket], height(loudness[bucket]), 0.012) << rate << " Hz, bucket " << bucket;
    }
    // One that claims to be longer than it is.
    const auto claimed = generate("long.wav", 200, 200);
    ASSERT_TRUE(claimed);
    EXPECT_GT(claimed->samples[60], 0.5);
    EXPECT_EQ(claimed->samples[100], 0);
}

TEST_F(EditorWaveformGeneratorTest, MixesAllTracksEachInItsPlace) {
    writeWav(folder / "one.wav", steps({0.25F, 0.25F, 0, 0, 0.25F, 0.25F}));
    writeWav(folder / "other.wav", steps({0.5F, 0, 0.5F, 0}, 44100, 2));
    // The second begins 0.4 s late and ends after the first.
    runFfmpeg("-i '" + (folder / "one.wav") + "' -itsoffset 0.4 -i '" + (folder / "other.wav") +
              "' -map 0 -map 1 -c:a pcm_f32le '" + (folder / "a.mov") + "'");
    const auto waveform = generate("a.mov", 80, 0.8);
    ASSERT_TRUE(waveform) << waveform.error().message;
    const std::vector<float> wanted{0.25F, 0.25F, 0, 0, 0.75F, 0.25F, 0.5F, 0};
    for (std::size_t bucket = 0; bucket < 80; ++bucket)
        if (bucket % 10 != 0 && bucket % 10 != 9) {
            EXPECT_NEAR(waveform->samples[bucket], height(wanted[bucket / 10]), 0.02) << bucket;
        }
}

TEST_F(EditorWaveformGeneratorTest, ChoosesHowManyBuckets) {
    writeWav(folder / "a.wav", steps({0.5F}));
    struct Row {
        double duration;
        std::optional<int> asked;
        std::size_t count;
    };
    for (const Row& row : std::vector<Row>{{10, {}, 2400},
                                           {30, {}, 3600},
                                           {100, {}, 12000},
                                           {200, {}, 12000},
                                           {20.99, {}, 2518},
                                           {10, 17, 17},
                                           {10, 0, 1},
                                           {10, -3, 1},
                                           {1e300, {}, 12000},
                                           {INFINITY, {}, 12000}}) {
        const auto waveform = generate("a.wav", row.asked, row.duration);
        ASSERT_TRUE(waveform);
        EXPECT_EQ(waveform->samples.size(), row.count) << row.duration;
    }
}

TEST_F(EditorWaveformGeneratorTest, IsEmptyWithoutSoundOrDurationAndFailsWithoutAFile) {
    runFfmpeg(paintedSource(10, 0.5) + "-c:v mpeg4 '" + (folder / "silent.mov") + "'");
    EXPECT_EQ(*generate("silent.mov", {}, 5), EditorWaveform::empty());
    writeWav(folder / "a.wav", steps({0.5F}));
    for (const double duration : {0.0, -1.0, double(NAN)})
        EXPECT_EQ(*generate("a.wav", {}, duration), EditorWaveform::empty()) << duration;
    const auto missing = generate("missing.mov", {}, 5);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().message, "missing.mov: No such file or directory");
}

TEST_F(EditorWaveformGeneratorTest, AnswersWhenItIsDestroyedAtWork) {
    writeWav(folder / "a.wav", glidingTones(20));
    std::promise<bool> answered;
    generator->generate(folder / "a.wav", {}, 20, answer,
                        [&](const Result<EditorWaveform>& waveform) { answered.set_value(waveform.has_value()); });
    generator.reset();
    EXPECT_EQ(answered.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
}

} // namespace
} // namespace keldra
