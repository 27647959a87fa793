// Gains land on the exact sample, however the sound is cut into pieces.

#include "media/AudioMix.h"

#include <gtest/gtest.h>
#include <random>

namespace keldra {
namespace {

/// Ten samples a second, so that every gain can be worked out by hand.
std::vector<float> gains(const AudioMixParameters& parameters, int count, int first = 0, int rate = 10) {
    std::vector<float> samples(count * 2, 1.0F);
    parameters.apply(samples.data(), 2, count, first, rate);
    std::vector<float> left;
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(samples[i * 2], samples[i * 2 + 1]);
        left.push_back(samples[i * 2]);
    }
    return left;
}

void expectNear(const std::vector<float>& values, const std::vector<float>& wanted) {
    ASSERT_EQ(values.size(), wanted.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(values[i], wanted[i], 1e-6) << "sample " << i;
}

TEST(AudioMix, holdsAndRamps) {
    AudioMixParameters parameters(1);
    expectNear(gains(parameters, 2), {1, 1});
    parameters.setVolumeRamp(0.5F, 0.5F, {{8, 10}, {2, 10}});
    parameters.setVolumeRamp(0, 1, {{2, 10}, {4, 10}});
    parameters.setVolume(2, {7, 10});
    expectNear(gains(parameters, 11), {1, 1, 0, 0.25F, 0.5F, 0.75F, 1, 2, 0.5F, 0.5F, 0.5F});
}

TEST(AudioMix, takesHoldAtTheFirstSampleNotBeforeTheStart) {
    AudioMixParameters parameters(1);
    parameters.setVolume(0, {20001, 60000}); // just after sample 16000 of 48000
    EXPECT_EQ(gains(parameters, 3, 15999, 48000), (std::vector<float>{1, 1, 0}));
    AudioMixParameters exact(1);
    exact.setVolume(0, {20000, 60000});
    EXPECT_EQ(gains(exact, 3, 15999, 48000), (std::vector<float>{1, 0, 0}));
}

TEST(AudioMix, ofInstructionsThatStartTogetherTheLastCounts) {
    AudioMixParameters parameters(1);
    parameters.setVolume(0.25F, {1, 10});
    parameters.setVolume(0.5F, {1, 10});
    parameters.setVolumeRamp(1, 1, {{3, 10}, MediaTime::zero()});
    parameters.setVolumeRamp(1, 0, {{4, 10}, {4, 10}});
    parameters.setVolume(2, {5, 10});
    expectNear(gains(parameters, 7), {1, 0.5F, 0.5F, 0.5F, 1, 2, 2});
}

TEST(AudioMix, doesNotDependOnHowTheSoundIsCut) {
    std::mt19937 random(7);
    const auto upTo = [&](int limit) { return int(random() % limit); };
    AudioMixParameters parameters(1);
    for (int i = 0, at = 0; i < 40; ++i) {
        const int length = 1 + upTo(3000);
        if (i % 3 == 0)
            parameters.setVolume(float(upTo(200)) / 100, {at, 60000});
        else
            parameters.setVolumeRamp(float(upTo(200)) / 100, float(upTo(200)) / 100, {{at, 60000}, {length, 60000}});
        at += length + (i % 2 ? 0 : upTo(500));
    }
    const int total = 48000;
    const std::vector<float> whole = gains(parameters, total, 0, 48000);
    std::vector<float> pieces;
    while (int(pieces.size()) < total) {
        const int count = std::min(1 + upTo(1500), total - int(pieces.size()));
        const std::vector<float> piece = gains(parameters, count, int(pieces.size()), 48000);
        pieces.insert(pieces.end(), piece.begin(), piece.end());
    }
    for (int i = 0; i < total; ++i)
        ASSERT_NEAR(whole[i], pieces[i], 1e-6) << "sample " << i;
}

} // namespace
} // namespace keldra
