#include "recording/CaptureGeometry.h"

#include "recording/RecordingPath.h"
#include "recording/RecordingQuality.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(RecordingQuality, BuysBitsPerPictureArea) {
    EXPECT_EQ(averageBitRate(RecordingQuality::high, 1920, 1080), 10'368'000);
    EXPECT_EQ(averageBitRate(RecordingQuality::high, 100, 100), 6'000'000);
    EXPECT_EQ(averageBitRate(RecordingQuality::medium, 1920, 1080), 5'806'080);
    EXPECT_EQ(averageBitRate(RecordingQuality::low, 3840, 2160), 11'612'160);
    EXPECT_EQ(framesPerSecond(RecordingQuality::low), 24);
}

TEST(CaptureGeometry, SizesAreEvenAndNeverEmpty) {
    EXPECT_EQ(evenPixelSize({1920, 1080}, 1), (PixelRect{0, 0, 1920, 1080}));
    EXPECT_EQ(evenPixelSize({101, 57}, 1), (PixelRect{0, 0, 100, 56}));
    EXPECT_EQ(evenPixelSize({1, 1}, 1), (PixelRect{0, 0, 2, 2}));
    EXPECT_EQ(evenPixelSize({853.4, 480.2}, 1.5), (PixelRect{0, 0, 1280, 720}));
}

TEST(CaptureGeometry, ALostScreenIsMeasuredByAStandIn) {
    const Screen standIn = screenForCapture({}, 3);
    EXPECT_EQ(evenPixelSize(standIn.frame.size(), standIn.backingScaleFactor), (PixelRect{0, 0, 3840, 2160}));
    EXPECT_EQ(scaleForWindow({}, QRectF(0, 0, 10, 10)), 2);
}

struct CropRow {
    const char* name;
    QRectF region;
    QRectF capture;
    PixelRect crop;
};

class Crop : public testing::TestWithParam<CropRow> {};

TEST_P(Crop, TurnsPointsThatCountUpIntoRowsThatCountDown) {
    const CropRow& row = GetParam();
    const auto crop = cropForRegion(row.region, row.capture, 1920, 1080, row.crop.width, row.crop.height);
    ASSERT_TRUE(crop);
    EXPECT_EQ(*crop, row.crop) << crop->x << "," << crop->y;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Crop,
    testing::Values(CropRow{"bottomLeft", {0, 0, 100, 50}, {0, 0, 1920, 1080}, {0, 1030, 100, 50}},
                    CropRow{"topRight", {1820, 1030, 100, 50}, {0, 0, 1920, 1080}, {1820, 0, 100, 50}},
                    CropRow{
                        "displayBesideAndBelow", {1930, -990, 100, 50}, {1920, -1000, 1920, 1080}, {10, 1020, 100, 50}},
                    CropRow{"scaled", {10, 20, 200, 100}, {0, 0, 1280, 720}, {15, 900, 300, 150}},
                    CropRow{"beyondTheDisplay", {-20, 1060, 100, 50}, {0, 0, 1920, 1080}, {-20, -30, 100, 50}}),
    [](const auto& instance) { return instance.param.name; });

TEST(CaptureGeometry, NothingIsCutFromOrForAnEmptyRectangle) {
    EXPECT_FALSE(cropForRegion({0, 0, 0, 50}, {0, 0, 1920, 1080}, 1920, 1080, 2, 50));
    EXPECT_FALSE(cropForRegion({0, 0, 10, 50}, {}, 1920, 1080, 10, 50));
}

TEST(RecordingPath, IsNamedByTheLocalMomentWithLatinDigits) {
    const QTemporaryDir folder;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    const auto path = makeOutputPath(folder.path(), QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7)));
    QLocale::setDefault(QLocale::c());
    ASSERT_TRUE(path);
    EXPECT_EQ(*path, folder.filePath("KELDRA-2026-03-04-05-06-07.mov"));
}

TEST(RecordingPath, NeedsAFolder) {
    const QTemporaryDir folder;
    const QString file = folder.filePath("file");
    ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
    for (const QString& place : {folder.filePath("missing"), file, QString()}) {
        const auto path = makeOutputPath(place, QDateTime::currentDateTime());
        ASSERT_FALSE(path) << place.toStdString();
        EXPECT_EQ(path.error().message, "The output folder is unavailable or not writable.");
    }
}

} // namespace
} // namespace keldra
