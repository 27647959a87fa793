// Reverse play finds every picture in the cache, and none is decoded over and over.

#include "media/BackwardReader.h"

#include "TestMovies.h"

#include <gtest/gtest.h>

namespace keldra::test {
namespace {

constexpr int rate = 30;
constexpr int frameTotal = 90;

TEST(BackwardReader, DecodesAPictureOnceWhereThereIsRoom) {
    const TemporaryFolder folder;
    struct Row {
        const char* name;
        int keyFrameDistance;
        int cachedPictures;
        int stride;
        /// Pictures decoded ahead after each one shown.
        int ahead;
        int mostDecoded;
    };
    const Row rows[] = {
        {"room for two runs", 30, 61, 1, 2, 95},
        {"with no time to read ahead", 30, 61, 1, 0, 95},
        {"leaving out what is late", 30, 61, 3, 0, 95},
        {"more than there is room for", 30, 30, 1, 2, 3 * (30 + 15) + 10},
        {"key frames far apart", 90, 40, 1, 2, 90 + 71 + 52 + 33 + 14 + 20},
    };
    const std::size_t bytes =
        PictureCache::bytesOf(PixelBuffer::allocate(PixelFormat::i420, pictureWidth, pictureHeight));
    for (const Row& row : rows) {
        const std::string path = folder / (std::to_string(row.keyFrameDistance) + ".mov");
        runFfmpeg(paintedSource(rate, 3) + "-c:v libx264 -bf 2 -sc_threshold 0 -g " +
                  std::to_string(row.keyFrameDistance) + " -pix_fmt yuv420p '" + path + "'");
        const AssetPtr asset = Asset::open(path).value();
        const auto cache = std::make_shared<PictureCache>(bytes * std::size_t(row.cachedPictures));
        BackwardReader reader(asset, 0, {PixelFormat::i420, 2}, cache);
        int decoded = 0;
        for (int number = frameTotal - 1; number >= 0; number -= row.stride) {
            const MediaTime time(number * 2 + 1, rate * 2);
            while (reader.step(MediaTime::zero(), time, BackwardReader::Want::picture).value())
                ++decoded;
            const PixelBuffer picture = cache->find({path, 0}, time);
            ASSERT_TRUE(picture) << row.name << ", " << number;
            ASSERT_EQ(numberIn(picture), number) << row.name;
            for (int i = 0; i < row.ahead; ++i)
                decoded += reader.step(MediaTime::zero(), time, BackwardReader::Want::ahead).value() ? 1 : 0;
        }
        EXPECT_LE(decoded, row.mostDecoded) << row.name;
        EXPECT_FALSE(reader.step(MediaTime::zero(), MediaTime::zero(), BackwardReader::Want::ahead).value())
            << row.name;
    }
}

} // namespace
} // namespace keldra::test
