#include "doubles/ScriptedCamera.h"
#include "doubles/ScriptedCaptureDevices.h"
#include "media/FileMovieWriter.h"
#include "media/TrackReader.h"
#include "platform/Desk.h"
#include "recording/ScreenRecorder.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

TEST(X11Pointer, MissesNoClickAndTakesNoWheelForOne) {
    Desk desk;
    Pointer& pointer = *desk.platform.pointer;
    desk.hands.warpPointer(123, 45);
    const double height = desk.platform.screens->screens().front().frame.height();
    EXPECT_TRUE(eventually([&] { return pointer.location() == QPointF(123, height - 45); }));
    EXPECT_EQ(pointer.takePressedButtons(), 0u);

    // Both are over before anybody looks.
    EXPECT_EQ(ChildProcess({"xdotool", "click", "4", "click", "5", "click", "6"}).wait(), 0);
    EXPECT_EQ(ChildProcess({"xdotool", "click", "1", "click", "3"}).wait(), 0);
    EXPECT_EQ(pointer.takePressedButtons(), 5u);
    EXPECT_EQ(pointer.takePressedButtons(), 0u);

    EXPECT_EQ(ChildProcess({"xdotool", "mousedown", "2"}).wait(), 0);
    EXPECT_EQ(pointer.takePressedButtons(), 2u);
    EXPECT_EQ(pointer.takePressedButtons(), 2u) << "held";
    EXPECT_EQ(ChildProcess({"xdotool", "mouseup", "2"}).wait(), 0);
    EXPECT_EQ(pointer.takePressedButtons(), 0u);
}

TEST(X11Pointer, CountsInPoints) {
    Desk desk(2);
    desk.hands.warpPointer(400, 80);
    const double height = desk.platform.screens->screens().front().frame.height();
    EXPECT_TRUE(eventually([&] { return desk.platform.pointer->location() == QPointF(200, height - 40); }));
}

/// The desktop recorded with a camera that a test holds.
class X11Recording : public testing::Test {
protected:
    X11Recording() {
        request.selection = DisplaySelection{1, ""};
        request.quality = RecordingQuality::medium;
        request.outputDirectory = folder.path();
        request.now = QDateTime::currentDateTime();
        request.offersMicrophone = false;
        request.cameraService = camera;
        request.cameraOverlayState = bubble;
    }
    ~X11Recording() override { camera.reset(); }

    void start() {
        std::optional<Result<void>> started;
        recorder.startRecording(request, [this](Result<RecordingOutput> result) { output = std::move(result); })
            .then([&](Result<void> result) { started = std::move(result); });
        ASSERT_TRUE(desk.mainQueue.pumpUntil([&] { return started.has_value(); }));
        ASSERT_TRUE(*started) << started->error().message;
    }
    /// More frames, and the time they take.
    void goOn(int frames) {
        const std::int64_t wanted = recorder.writtenFrameCount() + frames;
        EXPECT_TRUE(eventually([&] { return recorder.writtenFrameCount() >= wanted; }));
    }
    void startCamera() {
        camera->start("first").then([](bool isRunning) { EXPECT_TRUE(isRunning); });
        ASSERT_TRUE(desk.mainQueue.pumpUntil([&] { return camera->isRunning(); }));
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 64, 48);
        for (int y = 0; y < 48; ++y)
            std::fill_n(reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y)), 64, 0xff20c040U);
        script->deliver(picture);
        ASSERT_TRUE(eventually([&] { return bool(camera->latestFrame()); }));
    }
    std::vector<VideoFrame> finish() {
        recorder.stopRecording();
        EXPECT_TRUE(desk.mainQueue.pumpUntil([&] { return output.has_value(); }));
        EXPECT_TRUE(*output);
        std::vector<VideoFrame> frames;
        const auto asset = Asset::open((*output)->url.toLocalFile().toStdString());
        const auto reader = *TrackReader::open(*asset, (*asset)->tracks(MediaKind::video).at(0).index, {});
        for (auto frame = reader->next(); frame && *frame; frame = reader->next())
            frames.push_back(**frame);
        return frames;
    }
    /// Whether the camera shows at that pixel.
    static bool isCamera(const VideoFrame& frame, int x, int y) {
        const std::uint8_t* pixel = frame.pixels.row(0, y) + std::ptrdiff_t(x) * 4;
        return std::abs(pixel[0] - 0x40) < 12 && std::abs(pixel[1] - 0xc0) < 12 && std::abs(pixel[2] - 0x20) < 12;
    }

    Desk desk;
    QTemporaryDir folder;
    SerialQueue cameraQueue{"test camera"};
    SerialQueue captureQueue{"test capture"};
    std::shared_ptr<CameraScript> script = std::make_shared<CameraScript>(desk.mainQueue);
    std::shared_ptr<CameraService> camera =
        std::make_shared<CameraService>(std::make_shared<ScriptedCaptureDevices>(desk.mainQueue),
                                        std::make_unique<ScriptedCamera>(script), cameraQueue);
    std::shared_ptr<CameraOverlayState> bubble = std::make_shared<CameraOverlayState>();
    RecordingRequest request;
    std::optional<Result<RecordingOutput>> output;
    ScreenRecorder recorder{desk.platform, makeFileMovieWriter, captureQueue, desk.mainQueue};
};

TEST_F(X11Recording, ShowsTheBubbleWhereItIsOverAStillScreen) {
    const SceneProcess scene({"--still", "--colors", "808080,808080,808080,808080,808080,808080,808080,808080"});
    startCamera();
    const QRectF circle(100, 200, 240, 240);
    bubble->setSnapshot({true, circle, CameraOverlayShape::circle, 120});
    start();
    goOn(12);
    const std::int64_t moved = recorder.writtenFrameCount();
    // Half beyond the left edge, which leaves 100 by 200 points.
    bubble->setSnapshot({true, QRectF(-100, 600, 200, 200), CameraOverlayShape::roundedSquare, 32});
    goOn(12);
    camera->stop().then([] {});
    EXPECT_TRUE(desk.mainQueue.pumpUntil([&] { return !camera->isRunning(); }));
    goOn(1);
    const std::vector<VideoFrame> frames = finish();
    ASSERT_GT(frames.size(), 24u);

    // The screen is 1080 high: the circle's middle is at 220, 760.
    const VideoFrame& first = frames[std::size_t(moved) - 2];
    EXPECT_TRUE(isCamera(first, 220, 760));
    EXPECT_TRUE(isCamera(first, 220, 646));
    EXPECT_TRUE(isCamera(first, 334, 760));
    EXPECT_FALSE(isCamera(first, 128, 668)) << "outside the circle, inside its square";
    EXPECT_FALSE(isCamera(first, 344, 760));
    const VideoFrame& second = frames[std::size_t(moved) + 8];
    EXPECT_FALSE(isCamera(second, 220, 760)) << "it has moved";
    EXPECT_TRUE(isCamera(second, 40, 380));
    EXPECT_TRUE(isCamera(second, 14, 294)) << "a square with round corners";
    EXPECT_FALSE(isCamera(second, 1, 281));
    EXPECT_FALSE(isCamera(second, 106, 380));
    EXPECT_FALSE(isCamera(frames.back(), 40, 380)) << "gone with the camera";
    EXPECT_GT((second.time - first.time).seconds(), 0.2) << "ten frames carry the times at which they were drawn";
}

TEST(X11DisplayCapture, DeliversWhatChangesAndTellsOfALostDisplay) {
    Desk desk;
    desk.hands.setMonitors({{"L", {0, 0, 960, 1080}}, {"R", {960, 0, 960, 1080}}});
    const SceneProcess scene(sceneAt(1000, 100, {"--rate", "20"}));
    const auto capture = desk.platform.makeDisplayCapture();
    SerialQueue queue("test frames");
    std::mutex lock;
    std::vector<ScreenFrame> frames;
    std::vector<Error> stops;
    FrameSink sink;
    sink.frame = [&](ScreenFrame frame) {
        const std::lock_guard guard(lock);
        frames.resize(1);
        frames[0] = std::move(frame);
    };
    sink.stopped = [&](Error error) {
        const std::lock_guard guard(lock);
        stops.push_back(std::move(error));
    };
    const QList<Screen> screens = desk.platform.screens->screens();
    DisplayCaptureConfiguration configuration;
    configuration.displayID = screens.at(1).number;
    // Reaching beyond the display on the left, where it is black.
    configuration.crop = {-60, 50, 800, 500};
    configuration.minimumFrameInterval = sixtieth;
    std::optional<Result<void>> started;
    capture->start(configuration, queue, sink, [&](Result<void> result) { started = std::move(result); });
    ASSERT_TRUE(desk.mainQueue.pumpUntil([&] { return started.has_value(); }));
    ASSERT_TRUE(*started);
    EXPECT_TRUE(eventually([&] {
        const std::lock_guard guard(lock);
        return !frames.empty() && showsScene(frames[0].pixels, 100, 50) &&
               scene::colourAt(frames[0].pixels, 30, 200) == 0u;
    }));
    desk.hands.removeMonitor("R");
    EXPECT_TRUE(eventually([&] {
        const std::lock_guard guard(lock);
        return !stops.empty();
    }));
    EXPECT_EQ(stops.at(0).message, "The recorded display was disconnected.");
    std::optional<Result<void>> stopped;
    capture->stop([&](Result<void> result) { stopped = std::move(result); });
    EXPECT_TRUE(desk.mainQueue.pumpUntil([&] { return stopped.has_value(); }));
}

} // namespace
} // namespace keldra
