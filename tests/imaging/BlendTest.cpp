#include "imaging/Blend.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace keldra {
namespace {

int product(int a, int b) {
    return int(std::lround(a * b / 255.0));
}

using Row = std::vector<std::uint8_t>;

TEST(Blend, OverForEveryAlphaAndCoverage) {
    for (int alpha = 0; alpha < 256; alpha += 5) {
        Row source;
        Row coverage;
        for (int covered = 0; covered < 256; ++covered) {
            source.insert(source.end(), {std::uint8_t(alpha), std::uint8_t(alpha / 2), 0, std::uint8_t(alpha)});
            coverage.push_back(std::uint8_t(covered));
        }
        Row covered(256 * 4, 201);
        Row plain(256 * 4, 201);
        Row colored(256 * 4, 201);
        blendRowCovered(covered.data(), source.data(), coverage.data(), 256);
        blendRow(plain.data(), source.data(), 256);
        blendColorCovered(colored.data(), {source[0], source[1], source[2], source[3]}, coverage.data(), 256);
        for (std::size_t at = 0; at < covered.size(); ++at) {
            const int weight = int(at / 4);
            const int kept = 255 - product(alpha, weight);
            ASSERT_EQ(covered[at], product(source[at], weight) + product(201, kept)) << alpha << " by " << weight;
            ASSERT_EQ(colored[at], covered[at]);
            ASSERT_EQ(plain[at], source[at] + product(201, 255 - alpha)) << alpha;
        }
    }
}

TEST(Blend, ColoursBrighterThanTheirAlphaDoNotWrap) {
    const std::uint8_t source[4] = {250, 250, 250, 10};
    std::uint8_t target[4] = {240, 240, 240, 240};
    blendRow(target, source, 1);
    EXPECT_EQ(target[0], 255);
}

TEST(Blend, RowTools) {
    Row row(9 * 4);
    fillRow(row.data(), {1, 2, 3, 255}, 9);
    EXPECT_EQ(row[32], 1);
    EXPECT_EQ(row[34], 3);
    EXPECT_TRUE(isOpaque(row.data(), 9));
    EXPECT_TRUE(isOpaque(row.data(), 0));
    row[4 * 8 + 3] = 254;
    EXPECT_FALSE(isOpaque(row.data(), 9));
    EXPECT_TRUE(isOpaque(row.data(), 8));

    const std::uint8_t coverage[] = {0, 1, 128, 255};
    std::uint8_t scaled[4];
    scaleCoverage(scaled, coverage, 128, 4);
    EXPECT_EQ((std::array<int, 4>{scaled[0], scaled[1], scaled[2], scaled[3]}), (std::array<int, 4>{0, 1, 64, 128}));
}

} // namespace
} // namespace keldra
