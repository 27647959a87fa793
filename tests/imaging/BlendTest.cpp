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

} // namespace
} // namespace keldra
