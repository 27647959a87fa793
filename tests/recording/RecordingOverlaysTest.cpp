#include "RecorderFixture.h"
#include "doubles/ScriptedCamera.h"
#include "doubles/ScriptedPointer.h"

namespace keldra {
namespace {

const MediaTime step(1, 600);

class RecordingOverlays : public RecorderFixture {
protected:
    RecordingOverlays() {
        request.pointerEffectsMonitor = monitor;
        request.cameraOverlayState = bubble;
        request.cameraService = camera;
        devices->microphones.authorization = CaptureAuthorization::denied;
        pointer->place = {300, 200};
        writer->copiesPictures = true;
    }
    void effects(bool indicators, bool sound, bool highlight) {
        PointerEffectsSettings settings;
        settings.showsClickIndicators = indicators;
        settings.clickSoundEnabled = sound;
        settings.showsCursorHighlight = highlight;
        monitor->updateSettings(settings);
    }
    /// A frame of a grey screen, now.
    void frame() {
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 640, 360);
        for (int y = 0; y < 360; ++y)
            std::fill_n(reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y)), 640, 0xff808080U);
        stream->deliver({std::move(picture), time.clock()->now()});
        time.settle();
    }
    void showCamera() {
        camera->start("first").then([](bool) {});
        time.settle();
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 40, 40);
        for (int y = 0; y < 40; ++y)
            std::fill_n(reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y)), 40, 0xffff0000U);
        cameraScript->deliver(picture);
        time.settle();
        bubble->setSnapshot({true, QRectF(20, 20, 100, 100), CameraOverlayShape::circle, 50});
    }
    std::uint32_t lastPixel(int x, int y) const { return pixel(writer->samples.back().picture, x, y); }

    std::shared_ptr<ScriptedPointer> pointer = std::make_shared<ScriptedPointer>();
    std::shared_ptr<PointerEffectsMonitor> monitor = std::make_shared<PointerEffectsMonitor>(
        pointer, std::make_shared<OwnWindows>(), time.clock(), time.scheduler());
    std::shared_ptr<CameraOverlayState> bubble = std::make_shared<CameraOverlayState>();
    std::shared_ptr<CameraScript> cameraScript = std::make_shared<CameraScript>(time.mainQueue());
    std::shared_ptr<CameraService> camera =
        std::make_shared<CameraService>(devices, std::make_unique<ScriptedCamera>(cameraScript), time.queue("camera"));
};

TEST_F(RecordingOverlays, AStillScreenIsLeftAloneByAHighlight) {
    effects(false, false, true);
    ASSERT_TRUE(start());
    frame();
    time.advance(1s);
    ASSERT_EQ(writer->samples.size(), 1u);
    EXPECT_NE(lastPixel(300, 160), 0x808080u) << "the highlight is there";
    EXPECT_EQ(lastPixel(330, 160), 0x808080u);
}

TEST_F(RecordingOverlays, AClickOverAStillScreenIsWrittenBehindItsLastFrame) {
    effects(true, false, false);
    ASSERT_TRUE(start());
    time.advance(100ms);
    EXPECT_TRUE(writer->samples.empty()) << "a tick before the first frame";
    frame();
    const MediaTime first = writer->samples[0].time;
    time.advance(1s);
    pointer->click();
    time.advance(600ms);
    const std::size_t count = writer->samples.size();
    EXPECT_NEAR(double(count), 1 + 0.52 / 0.016, 2);
    for (std::size_t i = 1; i < count; ++i)
        EXPECT_EQ(writer->samples[i].time, first + step * std::int64_t(i));
    EXPECT_NE(pixel(writer->samples[5].picture, 300, 160 - 14), 0x808080u) << "the ripple";
    time.advance(1s);
    EXPECT_EQ(writer->samples.size(), count) << "and no more when it is over";
    frame();
    EXPECT_EQ(writer->samples.back().time, time.clock()->now()) << "the next real frame stands at its own time";
    EXPECT_EQ(lastPixel(300, 160), 0x808080u);
}

TEST_F(RecordingOverlays, AClickOutsideTheRegionChangesNothing) {
    request.selection = RegionSelection{1, QRectF(0, 0, 100, 100)};
    effects(true, false, true);
    ASSERT_TRUE(start());
    frame();
    pointer->click();
    time.advance(600ms);
    EXPECT_EQ(writer->samples.size(), 1u);
    // Inside, it is mapped to the region's own pixels.
    pointer->place = {40, 70};
    pointer->held = 1;
    time.advance(50ms);
    EXPECT_GT(writer->samples.size(), 2u);
    EXPECT_NE(lastPixel(40, 30), 0x808080u);
}

TEST_F(RecordingOverlays, EffectsFollowAMovingWindow) {
    request.selection = WindowSelection{1, 77, QRectF(10, 10, 301, 201), "Editor"};
    windows->live = QRectF(200, 100, 301, 201);
    writer->copiesPictures = false;
    effects(false, false, true);
    ASSERT_TRUE(start());
    PixelBuffer picture = coordinatesPicture(300, 200);
    deliver(1000s, picture);
    EXPECT_NE(lastPixel(99, 100), coordinates(99, 100)) << "at 300, 200 on the desktop";
    windows->live = QRectF(280, 100, 301, 201);
    deliver(1001s, picture);
    EXPECT_EQ(lastPixel(99, 100), coordinates(99, 100));
    EXPECT_NE(lastPixel(19, 100), coordinates(19, 100));
    windows->live = QRectF(310, 100, 301, 201);
    deliver(1002s, picture);
    EXPECT_EQ(writer->samples.back().picture.data(), picture.data()) << "the pointer has left it: no copy";
}

TEST_F(RecordingOverlays, TheBubbleMovesOverAStillScreenAndGoesWithTheCamera) {
    ASSERT_TRUE(start());
    frame();
    time.advance(1s);
    EXPECT_EQ(writer->samples.size(), 1u);
    showCamera();
    time.advance(1s);
    const auto shown = double(writer->samples.size());
    EXPECT_NEAR(shown, 30, 3) << "thirty times a second";
    EXPECT_EQ(lastPixel(70, 290), 0xff0000u);
    EXPECT_NEAR((time.clock()->now() - writer->samples.back().time).seconds(), 0, 0.04) << "at their own times";
    bubble->setSnapshot({true, QRectF(400, 200, 100, 100), CameraOverlayShape::circle, 50});
    time.advance(50ms);
    EXPECT_EQ(lastPixel(70, 290), 0x808080u);
    EXPECT_EQ(lastPixel(450, 110), 0xff0000u);

    camera->stop().then([] {});
    time.advance(50ms);
    EXPECT_EQ(lastPixel(450, 110), 0x808080u);
    const std::size_t count = writer->samples.size();
    time.advance(1s);
    EXPECT_EQ(writer->samples.size(), count);
    stop();
    EXPECT_TRUE(outputs.at(0));
}

TEST_F(RecordingOverlays, ClicksAreATrackFromTheFirstFrameToTheEnd) {
    request.clickSoundEnabled = true;
    effects(false, true, false);
    ASSERT_TRUE(start());
    pointer->click();
    time.advance(100ms);
    frame();
    time.advance(500ms);
    pointer->click();
    time.advance(500ms);
    stop();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_TRUE(outputs[0]->hasLiveClickTrack);
    ASSERT_EQ(writer->sounds.size(), 1u);
    const auto& clicks = writer->sounds[0];
    EXPECT_TRUE(clicks.isMarkedFinished);
    EXPECT_EQ(clicks.buffers.front().time(), *writer->sessionStart);
    EXPECT_NEAR((clicks.buffers.back().endTime() - *writer->sessionStart).seconds(), 1, 0.04);
    std::vector<double> onsets;
    for (const AudioBuffer& chunk : clicks.buffers)
        for (std::int64_t n = 0; n < chunk.frameCount(); ++n)
            if (std::abs(chunk.samples<float>()[n]) > 0.02F &&
                (onsets.empty() || (chunk.time() + MediaTime(n, 48000)).seconds() > onsets.back() + 0.1))
                onsets.push_back((chunk.time() + MediaTime(n, 48000)).seconds());
    ASSERT_EQ(onsets.size(), 1u) << "a click before the first frame is lost";
    EXPECT_NEAR(onsets[0] - writer->sessionStart->seconds(), 0.51, 0.03);
    EXPECT_TRUE(monitor->takeCapturedClickTimes().empty());
}

using RecordingMicrophone = RecorderFixture;

AudioBuffer soundAt(MediaTime at, std::int64_t count) {
    AudioBuffer buffer = AudioBuffer::allocate({SampleKind::int24, 48000, 1}, count, at);
    std::fill_n(buffer.mutableBytes(), buffer.byteCount(), std::byte(9));
    return buffer;
}

bool isSilent(const AudioBuffer& buffer) {
    return std::all_of(buffer.bytes(), buffer.bytes() + buffer.byteCount(),
                       [](std::byte b) { return b == std::byte(0); });
}

TEST_F(RecordingMicrophone, IsSwitchedInMidRecording) {
    request.microphoneDeviceID = "gone";
    ASSERT_TRUE(start());
    EXPECT_EQ(microphone->deviceID, "second") << "a device that is gone is the desktop's choice";
    ASSERT_EQ(writer->sounds.size(), 1u) << "a track although it is off";
    const MediaTime begin(1000, 1);
    microphone->deliver(soundAt(begin, 480));
    deliver(1000s, coordinatesPicture(640, 360));
    EXPECT_TRUE(writer->sounds[0].buffers.empty()) << "sound before the first frame";
    for (int i = 1; i < 4; ++i) {
        EXPECT_TRUE(recorder.setMicrophoneEnabled(i == 2));
        microphone->deliver(soundAt(begin + MediaTime(i, 100), 480));
        time.settle();
    }
    const auto& buffers = writer->sounds[0].buffers;
    ASSERT_EQ(buffers.size(), 3u);
    EXPECT_TRUE(isSilent(buffers[0]));
    EXPECT_FALSE(isSilent(buffers[1]));
    EXPECT_TRUE(isSilent(buffers[2]));
    deliver(1001s, coordinatesPicture(640, 360));
    stop();
    EXPECT_EQ(buffers.back().endTime(), MediaTime(1001, 1)) << "silence up to the last picture";
    EXPECT_EQ(microphone->stops, 1);
    EXPECT_FALSE(recorder.setMicrophoneEnabled(true));
}

TEST_F(RecordingMicrophone, IsHeardUpToTheMomentOfTheStop) {
    request.microphoneEnabled = true;
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    const MediaTime now = time.clock()->now();
    microphone->deliver(soundAt(now - MediaTime(1, 10), 2400));
    microphone->held = soundAt(now - MediaTime(1, 20), 4800);
    stop();
    const auto& buffers = writer->sounds.at(0).buffers;
    EXPECT_EQ(buffers.back().endTime(), now) << "and nothing of what came after it";
    EXPECT_FALSE(isSilent(buffers.back()));
    EXPECT_EQ(microphone->stops, 1);
}

TEST_F(RecordingMicrophone, IsLeftOutWhereItIsNotAllowedOrNotThere) {
    const std::vector<std::function<void()>> rows{
        [&] { devices->microphones.authorization = CaptureAuthorization::denied; },
        [&] {
            devices->microphones.authorization = CaptureAuthorization::authorized;
            devices->microphones.devices.clear();
        },
        [&] {
            devices->microphones.devices = {{"first", "First"}};
            writer->refusesSound = true;
        },
        [&] {
            writer->refusesSound = false;
            request.microphoneEnabled = false;
            request.offersMicrophone = false;
        },
    };
    request.microphoneEnabled = true;
    for (const auto& arrange : rows) {
        arrange();
        ASSERT_TRUE(start());
        EXPECT_FALSE(recorder.setMicrophoneEnabled(true));
        EXPECT_TRUE(writer->sounds.empty());
        deliver(1000s, coordinatesPicture(640, 360));
        stop();
    }
    EXPECT_EQ(outputs.size(), rows.size());
}

TEST_F(RecordingMicrophone, ThatRefusesFailsTheStart) {
    microphone->startError = Error{"test", 7, "The microphone is busy.", {}};
    const Result<void> started = start();
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error().message, "The microphone is busy.");
    EXPECT_TRUE(outputs.empty());
    EXPECT_FALSE(stream->configuration) << "nothing was captured";
}

} // namespace
} // namespace keldra
