#include "recording/CameraService.h"

#include "doubles/ScriptedAudioMeter.h"
#include "doubles/ScriptedCamera.h"
#include "doubles/ScriptedCaptureDevices.h"
#include "doubles/VirtualTime.h"
#include "recording/MicrophoneLevelMonitor.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

class CameraServiceTest : public testing::Test {
protected:
    /// Starts; the answer is there once the camera has answered.
    std::shared_ptr<std::optional<bool>> start(const QString& deviceID) {
        const auto answer = std::make_shared<std::optional<bool>>();
        service.start(deviceID).then([answer](bool isRunning) { *answer = isRunning; });
        return answer;
    }
    void stop() {
        service.stop().then([] {});
        time.settle();
    }
    bool started(const QString& deviceID) {
        const auto answer = start(deviceID);
        time.settle();
        EXPECT_TRUE(*answer);
        return answer->value_or(false);
    }
    void deliver() {
        script->deliver(PixelBuffer::allocate(PixelFormat::bgra, 4, 4));
        time.settle();
    }

    VirtualTime time;
    std::shared_ptr<ScriptedCaptureDevices> devices = std::make_shared<ScriptedCaptureDevices>(time.mainQueue());
    std::shared_ptr<CameraScript> script = std::make_shared<CameraScript>(time.mainQueue());
    CameraService service{devices, std::make_unique<ScriptedCamera>(script), time.queue("KELDRA.CameraFrames")};
};

TEST_F(CameraServiceTest, GivesTheNewestPictureWhileItRuns) {
    EXPECT_TRUE(service.isAuthorized());
    EXPECT_TRUE(started("first"));
    EXPECT_TRUE(service.isRunning());
    EXPECT_FALSE(service.isTransitioning());
    EXPECT_EQ(service.previewGeneration(), 1);
    EXPECT_FALSE(service.latestFrame());
    deliver();
    EXPECT_TRUE(service.latestFrame());
    stop();
    EXPECT_FALSE(service.isRunning());
    EXPECT_FALSE(service.latestFrame());
    deliver();
    EXPECT_FALSE(service.latestFrame()) << "a picture that was on its way";
}

TEST_F(CameraServiceTest, TellsWhyItCannotStart) {
    const auto check = [&](const char* words, auto&& arrange) {
        arrange();
        EXPECT_FALSE(started("first")) << words;
        EXPECT_EQ(service.userFacingError(), words);
        EXPECT_FALSE(service.isRunning());
        EXPECT_FALSE(service.isTransitioning());
    };
    check("The camera could not start.", [&] { script->startsRunning = false; });
    script->startsRunning = true;
    check("Could not connect the camera.", [&] {
        script->refusals["first"] = Error{"CameraServiceError", 1, "Could not connect the camera.", {}};
    });
    check("No camera is available.", [&] { devices->cameras.devices.clear(); });
    check("Camera access was not granted.", [&] { devices->cameras.authorization = CaptureAuthorization::denied; });
    EXPECT_EQ(devices->cameras.requests, 0) << "who was denied is not asked again";
    check("Camera access was not granted.", [&] {
        devices->cameras.authorization = CaptureAuthorization::undetermined;
        devices->cameras.grants = false;
    });
    EXPECT_EQ(devices->cameras.requests, 1);
    EXPECT_FALSE(service.isAuthorized());
    EXPECT_EQ(service.previewGeneration(), 0);
}

TEST_F(CameraServiceTest, AFailedStartLetsGoOfTheCameraBefore) {
    const QList<CaptureDeviceOption> all = devices->cameras.devices;
    EXPECT_TRUE(started("first"));
    deliver();
    devices->cameras.devices.clear();
    EXPECT_FALSE(started("first")) << "it was unplugged, and there is no other";
    EXPECT_FALSE(service.isRunning());
    EXPECT_FALSE(script->isRunning);
    EXPECT_FALSE(service.latestFrame());
    devices->cameras.devices = all;
    EXPECT_TRUE(started("first"));
    EXPECT_EQ(script->configured.size(), 2u) << "a camera that was plugged in again is set up again";
}

TEST_F(CameraServiceTest, OfAStartAndAStopThatRaceTheLastDecides) {
    script->answers.holds = true;
    const auto answer = start("first");
    time.settle();
    EXPECT_TRUE(service.isTransitioning());
    service.stop().then([] {});
    script->answers.releaseAll();
    time.settle();
    EXPECT_EQ(*answer, false);
    EXPECT_FALSE(service.isRunning());
    EXPECT_FALSE(service.isTransitioning());
    EXPECT_FALSE(script->isRunning);
    EXPECT_EQ(service.userFacingError(), "");

    // The other way round, and with another camera in between.
    script->answers.holds = true;
    service.stop().then([] {});
    const auto first = start("first");
    const auto second = start("second");
    script->answers.releaseAll();
    time.settle();
    EXPECT_EQ(*first, false);
    EXPECT_EQ(*second, true);
    EXPECT_TRUE(service.isRunning());
    EXPECT_TRUE(script->isRunning);
    EXPECT_EQ(script->configured.back(), "second");
}

class MicrophoneLevelMonitorTest : public testing::Test {
protected:
    VirtualTime time;
    std::shared_ptr<ScriptedCaptureDevices> devices = std::make_shared<ScriptedCaptureDevices>(time.mainQueue());
    std::shared_ptr<AudioMeterScript> script = std::make_shared<AudioMeterScript>();
    MicrophoneLevelMonitor monitor{devices, std::make_unique<ScriptedAudioMeter>(script), time.scheduler()};
};

TEST_F(MicrophoneLevelMonitorTest, RisesAtOnceAndFallsInElevenTicks) {
    EXPECT_TRUE(monitor.start("first"));
    script->power = 0;
    time.advance(60ms);
    EXPECT_EQ(monitor.level(), 1);
    script->power.reset();
    time.advance(10 * 60ms);
    EXPECT_GT(monitor.level(), 0);
    time.advance(60ms);
    EXPECT_EQ(monitor.level(), 0);
}

TEST_F(MicrophoneLevelMonitorTest, MapsDecibels) {
    EXPECT_EQ(MicrophoneLevelMonitor::levelAfterTick(0, -55), 0);
    EXPECT_EQ(MicrophoneLevelMonitor::levelAfterTick(0, -120), 0);
    EXPECT_NEAR(MicrophoneLevelMonitor::levelAfterTick(0, -27.5), 0.59, 1e-9);
    EXPECT_EQ(MicrophoneLevelMonitor::levelAfterTick(0, -8.3), 1);
    EXPECT_EQ(MicrophoneLevelMonitor::levelAfterTick(0, 6), 1);
    EXPECT_NEAR(MicrophoneLevelMonitor::levelAfterTick(0.5, std::nullopt), 0.35, 1e-9);
}

TEST_F(MicrophoneLevelMonitorTest, MeasuresTheDeviceThatIsChosen) {
    EXPECT_TRUE(monitor.start("first"));
    EXPECT_TRUE(monitor.start("first"));
    EXPECT_EQ(script->started, std::vector<QString>{"first"});
    EXPECT_TRUE(monitor.start("gone"));
    EXPECT_EQ(script->started.back(), "second");
    script->canStart = false;
    EXPECT_FALSE(monitor.start("first"));
    EXPECT_FALSE(monitor.isRunning());
    EXPECT_FALSE(script->isRunning);
    devices->microphones.devices.clear();
    EXPECT_FALSE(monitor.start(""));
    EXPECT_EQ(monitor.level(), 0);
}

} // namespace
} // namespace keldra
