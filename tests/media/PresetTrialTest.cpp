#include "media/PresetTrial.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(PresetTrial, TakesTheFinestThatLeavesRoom) {
    struct Row {
        double rate, veryfast, superfast;
        const char* preset;
    };
    for (const Row& row : {Row{60, 117, 131, "ultrafast"}, Row{24, 117, 131, "superfast"},
                           Row{60, 400, 500, "veryfast"}, Row{60, 0, 0, "ultrafast"}, Row{30, 150, 160, "veryfast"}})
        EXPECT_EQ(choosePreset(
                      row.rate,
                      [&](const std::string& preset) { return preset == "veryfast" ? row.veryfast : row.superfast; }),
                  row.preset);
}

TEST(PresetTrial, ChoosesOneThatOpens) {
    H264Settings settings;
    settings.width = 320;
    settings.height = 180;
    settings.timeBase = {1, 60000};
    settings.averageBitRate = 1'000'000;
    settings.isLive = true;
    settings.maximumKeyFrameInterval = 120;
    settings.preset = tryPresets(settings);
    EXPECT_TRUE(H264Encoder::open(settings)) << settings.preset;
    ::setenv("KELDRA_X264_PRESET", "medium", 1);
    EXPECT_EQ(tryPresets(settings), "medium");
    EXPECT_EQ(untriedPreset(), "medium");
    ::unsetenv("KELDRA_X264_PRESET");
    EXPECT_EQ(untriedPreset(), "ultrafast");
}

} // namespace
} // namespace keldra
