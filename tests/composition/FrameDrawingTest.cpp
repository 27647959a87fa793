#include "composition/FrameDrawing.h"

#include "imaging/Convert.h"
#include "imaging/Pictures.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::noise;

PixelBuffer converted(const PixelBuffer& picture, PixelFormat format) {
    PixelBuffer result = PixelBuffer::allocate(format, picture.width(), picture.height());
    format == PixelFormat::i420 ? convertBgraToI420(picture, result) : convertI420ToBgra(picture, result);
    return result;
}

/// The samples of the first plane.
std::vector<int> samples(const PixelBuffer& picture) {
    std::vector<int> values;
    const int rowBytes = picture.format() == PixelFormat::bgra ? 4 * picture.width() : picture.width();
    for (int y = 0; y < picture.height(); ++y)
        values.insert(values.end(), picture.row(0, y), picture.row(0, y) + rowBytes);
    return values;
}

TEST(FrameDrawing, TakesAndGivesEitherFormat) {
    EditorCompositorInstruction instruction;
    instruction.cornerRadiusFraction = 0.2;
    const PixelBuffer planes = converted(noise(64, 36, 4), PixelFormat::i420);
    const PixelBuffer pixels = converted(planes, PixelFormat::bgra);
    const QTransform upright = QTransform::fromScale(0.8, 0.8) * QTransform::fromTranslate(6.3, 3.1);
    for (const QTransform& transform : {upright, QTransform(0, 1, -1, 0, 50, -10)}) {
        instruction.layers = {{1, transform, 1}};
        PixelBuffer reference = PixelBuffer::allocate(PixelFormat::bgra, 64, 36);
        FrameComposer().compose(
            instruction, 0, [&](std::int32_t) { return pixels; }, reference);
        const PixelBuffer expected = converted(reference, PixelFormat::i420);

        FrameDrawing drawing;
        PixelBuffer target = PixelBuffer::allocate(PixelFormat::bgra, 64, 36);
        drawing.draw(
            instruction, 0, [&](std::int32_t) { return planes; }, target);
        EXPECT_EQ(samples(target), samples(reference));
        PixelBuffer planar = PixelBuffer::allocate(PixelFormat::i420, 64, 36);
        drawing.draw(
            instruction, 0, [&](std::int32_t) { return pixels; }, planar);
        EXPECT_EQ(samples(planar), samples(expected)) << "finer chroma is composed as it is";
        drawing.draw(
            instruction, 0, [&](std::int32_t) { return planes; }, planar);
        if (transform.isRotating()) {
            EXPECT_EQ(samples(planar), samples(expected)) << "what is turned leaves the 4:2:0 road";
        }
    }
}

} // namespace
} // namespace keldra
