#include "imaging/Coverage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace keldra {
namespace {

constexpr PixelRect wide{0, 0, 12, 8};

std::vector<int> rowOf(const Coverage& coverage, int y) {
    const std::uint8_t* row = coverage.row(y);
    return {row, row + coverage.bounds().width};
}

TEST(Coverage, SidesBetweenPixelsCoverInProportion) {
    struct Row {
        const char* name;
        Edges shape;
        PixelRect bounds;
        std::vector<int> middle;
    };
    const Row rows[] = {
        {"whole pixels", {2, 1, 5, 4}, {2, 1, 3, 3}, {255, 255, 255}},
        {"half pixels", {1.5, 1, 4.5, 4}, {1, 1, 4, 3}, {128, 255, 255, 128}},
        {"a tenth", {2.9, 0, 4, 4}, {2, 0, 2, 4}, {26, 255}},
        {"inside one pixel", {3.25, 0, 3.75, 4}, {3, 0, 1, 4}, {128}},
        {"rounding dust", {2 - 1e-9, 1 + 1e-9, 5 + 1e-7, 4}, {2, 1, 3, 3}, {255, 255, 255}},
        {"beyond the clip", {-3.5, 1, 99, 4}, {0, 1, 12, 3}, std::vector<int>(12, 255)},
    };
    for (const Row& row : rows) {
        const Coverage coverage(row.shape, nullptr, wide);
        ASSERT_EQ(coverage.bounds(), row.bounds) << row.name;
        EXPECT_EQ(rowOf(coverage, 2), row.middle) << row.name;
    }
    EXPECT_EQ(rowOf(Coverage({1, 0.25, 2, 3}, nullptr, wide), 0), std::vector<int>{191});
    EXPECT_TRUE(Coverage({5, 1, 5, 4}, nullptr, wide).isEmpty());
    EXPECT_TRUE(Coverage({20, 1, 30, 4}, nullptr, wide).isEmpty());
    EXPECT_TRUE(Coverage({-1e300, -1e300, -5, -5}, nullptr, wide).isEmpty());
}

TEST(Coverage, FullRunsLeaveOutWhatIsPartlyCovered) {
    const Coverage coverage({1.5, 0.5, 6.5, 4}, nullptr, wide);
    EXPECT_EQ(coverage.fullRun(2), std::pair(1, 5));
    EXPECT_EQ(coverage.fullRun(0).first, coverage.fullRun(0).second);
}

GreyPlane cutCornerMask() {
    GreyPlane mask({0, 0, 4, 3});
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            mask.mutableRow(y)[x] = 255;
    mask.mutableRow(0)[0] = 0;
    return mask;
}

TEST(Coverage, MasksCutWithoutScaling) {
    const GreyPlane mask = cutCornerMask();
    const PlacedMask whole{&mask, 2, 1};
    const Coverage cut({2, 1, 6, 4}, &whole, wide);
    EXPECT_EQ(rowOf(cut, 1), (std::vector<int>{0, 255, 255, 255}));
    EXPECT_EQ(rowOf(cut, 2), (std::vector<int>{255, 255, 255, 255}));
    EXPECT_EQ(cut.fullRun(1), std::pair(1, 4));

    // A mask at the side of a shape between pixels covers as much as the shape does, not the square of it.
    const PlacedMask between{&mask, 2.5, 1};
    const Coverage shifted({2.5, 1, 6.5, 4}, &between, wide);
    EXPECT_EQ(rowOf(shifted, 2), (std::vector<int>{128, 255, 255, 255, 128}));
    EXPECT_EQ(rowOf(shifted, 1), (std::vector<int>{0, 128, 255, 255, 128}));

    // A mask that is larger than its shape ends with the shape, one that is smaller ends it.
    const PlacedMask early{&mask, 1, 1};
    EXPECT_EQ(rowOf(Coverage({2, 1, 6, 4}, &early, wide), 2), (std::vector<int>{255, 255, 255, 0}));
    // Cut by the clip on the left.
    const PlacedMask outside{&mask, -2, 0};
    EXPECT_EQ(rowOf(Coverage({-2, 0, 2, 3}, &outside, wide), 0), (std::vector<int>{255, 255}));
}

} // namespace
} // namespace keldra
