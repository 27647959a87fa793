#include "audio/AudioLevelAnalyzer.h"

#include "media/TestSound.h"

#include <limits>

namespace keldra {
namespace {

using namespace test;

template <typename T>
Result<T> waitFor(std::future<Result<T>> answer) {
    if (answer.wait_for(std::chrono::seconds(60)) != std::future_status::ready)
        return fail(Error{"test", 1, "There was no answer.", {}});
    return answer.get();
}

class AudioLevelAnalyzerTest : public testing::Test {
protected:
    Result<AudioLevels> measure(const TestSound& sound, double start = 0, double duration = 0) {
        writeWav(folder / "a.wav", sound);
        return measure("a.wav", start, duration);
    }
    Result<AudioLevels> measure(const std::string& name, double start = 0, double duration = 0) {
        auto promise = std::make_shared<std::promise<Result<AudioLevels>>>();
        analyzer.measure(folder / name, start, duration, answer,
                         [promise](Result<AudioLevels> levels) { promise->set_value(std::move(levels)); });
        return waitFor(promise->get_future());
    }

    static void expectLevels(const Result<AudioLevels>& levels, double peak, double rms) {
        ASSERT_TRUE(levels) << levels.error().message;
        EXPECT_NEAR(levels->peak, peak, 1e-4);
        EXPECT_NEAR(levels->rms, rms, 1e-4);
    }

    TemporaryFolder folder;
    SerialQueue answer{"test.answer"};
    AudioLevelAnalyzer analyzer;
};

TEST_F(AudioLevelAnalyzerTest, MeasuresAllSamplesOfAllChannelsAlike) {
    TestSound sine{48000, 1, {}};
    for (int n = 0; n < 48000; ++n)
        sine.samples.push_back(0.5F * float(std::sin(2 * M_PI * 100 * n / 48000)));
    expectLevels(measure(sine), 0.5, 0.5 / std::sqrt(2));

    TestSound stereo{44100, 2, {}};
    for (int n = 0; n < 1000; ++n)
        stereo.samples.insert(stereo.samples.end(), {0.75F, 0.0F});
    expectLevels(measure(stereo), 0.75, 0.75 / std::sqrt(2));

    expectLevels(measure({48000, 1, std::vector<float>(1000, 0.0F)}), 0, 0);
    expectLevels(measure({48000, 1, std::vector<float>(1000, 3.0F)}), 1, 3);

    const float nan = std::numeric_limits<float>::quiet_NaN();
    expectLevels(measure({48000, 1, std::vector<float>(1000, nan)}), 0, 0);
    TestSound holed{48000, 1, std::vector<float>(1000, 0.5F)};
    for (int n = 0; n < 500; ++n)
        holed.samples[std::size_t(2 * n)] = n % 2 == 0 ? nan : -std::numeric_limits<float>::infinity();
    expectLevels(measure(holed), 0.5, 0.5);
}

TEST_F(AudioLevelAnalyzerTest, TakesTheSpanToTheSample) {
    // A second each of 0.1, 0.2 and 0.3.
    TestSound steps{48000, 1, {}};
    for (int n = 0; n < 3 * 48000; ++n)
        steps.samples.push_back(0.1F * float(1 + n / 48000));
    struct Row {
        double start;
        double duration;
        double peak;
        double rms;
    };
    const double whole = std::sqrt((0.01 + 0.04 + 0.09) / 3);
    const std::vector<Row> rows{{1, 1, 0.2, 0.2},  {-5, 1, 0.1, 0.1},      {0.5, 1, 0.2, std::sqrt(0.025)},
                                {2, 50, 0.3, 0.3}, {1, 0, 0.3, whole},     {1, -2, 0.3, whole},
                                {9, 1, 0, 0},      {NAN, NAN, 0.3, whole}, {0, INFINITY, 0.3, whole}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.start << " for " << row.duration);
        expectLevels(measure(steps, row.start, row.duration), row.peak, row.rms);
    }
}

TEST_F(AudioLevelAnalyzerTest, MeasuresTheFirstTrackOnly) {
    writeWav(folder / "loud.wav", {48000, 1, std::vector<float>(48000, 0.5F)});
    writeWav(folder / "soft.wav", {48000, 1, std::vector<float>(48000, 0.1F)});
    runFfmpeg("-i '" + (folder / "soft.wav") + "' -i '" + (folder / "loud.wav") + "' -map 0 -map 1 -c copy '" +
              (folder / "a.mov") + "'");
    expectLevels(measure("a.mov"), 0.1, 0.1);
}

TEST_F(AudioLevelAnalyzerTest, TellsWhyThereIsNoResult) {
    runFfmpeg(paintedSource(10, 0.5) + "-c:v mpeg4 '" + (folder / "silent.mov") + "'");
    const auto silent = measure("silent.mov");
    ASSERT_FALSE(silent);
    EXPECT_EQ(silent.error(), makeError(AnalyzerError::noAudioTrack));
    const auto missing = measure("missing.mov");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().message, "missing.mov: No such file or directory");
}

TEST(NormalizationGain, FollowsTheLoudnessUnlessThePeakForbids) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    struct Row {
        double peak;
        double rms;
        std::optional<double> gain;
    };
    const std::vector<Row> rows{{0.5, 0.353553, 0.282843},
                                {0.01, 0.001, 2.0},
                                {0.95, 0.02, 0.937895},
                                {1, 0.1, 0.891},
                                {1, 50, 0.05},
                                {0, 0, std::nullopt},
                                {0.5, 0, std::nullopt},
                                {0, 0.5, std::nullopt},
                                {nan, 0.5, std::nullopt},
                                {0.5, nan, std::nullopt},
                                {infinite, 0.5, std::nullopt},
                                {0.5, infinite, std::nullopt},
                                {0.5, -1, std::nullopt},
                                {1e-310, 1e-310, std::nullopt}};
    for (const Row& row : rows) {
        const auto gain = AudioLevelAnalyzer::normalizationGain(row.peak, row.rms);
        ASSERT_EQ(gain.has_value(), row.gain.has_value()) << row.peak << " " << row.rms;
        if (gain) {
            EXPECT_NEAR(*gain, *row.gain, 1e-6) << row.peak << " " << row.rms;
        }
    }
}

} // namespace
} // namespace keldra
