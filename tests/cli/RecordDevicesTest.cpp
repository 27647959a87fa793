// The devices that a command line names, and where the camera goes.

#include "cli/RecordDevices.h"

#include "cli/RecordArguments.h"
#include "doubles/FixedDesktop.h"
#include "doubles/PumpedExecutor.h"
#include "doubles/ScriptedCaptureDevices.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(RecordArguments, NamesDevicesOrLeavesTheChoice) {
    EXPECT_FALSE(parseRecordArguments({"--display", "1"})->microphone);
    const auto arguments = parseRecordArguments({"--microphone", "--display", "1", "--camera", "some cam"});
    ASSERT_TRUE(arguments);
    EXPECT_EQ(arguments->microphone, "");
    EXPECT_EQ(arguments->camera, "some cam");
    EXPECT_EQ(parseRecordArguments({"--display", "1", "--microphone=x"})->microphone, "x");
}

class RecordDevices : public testing::Test {
protected:
    RecordDevices() { m_platform.devices = m_devices; }

    std::string chosen(const QString& word, CaptureDeviceKind kind = CaptureDeviceKind::microphone) const {
        const auto device = deviceFor(m_platform, kind, word);
        return device ? device->id.toStdString() : device.error().message;
    }

    PumpedExecutor m_main;
    const std::shared_ptr<ScriptedCaptureDevices> m_devices = std::make_shared<ScriptedCaptureDevices>(m_main);
    Platform m_platform;
};

TEST_F(RecordDevices, AreFoundByIdOrName) {
    EXPECT_EQ(chosen("first"), "first");
    EXPECT_EQ(chosen("SECOND"), "second") << "by name, whatever the case";
    EXPECT_EQ(chosen(""), "second") << "the desktop's choice";
    m_devices->microphones.defaultID.clear();
    EXPECT_EQ(chosen(""), "first");
}

TEST_F(RecordDevices, SayWhatIsThereInstead) {
    EXPECT_EQ(chosen("third"), R"(there is no microphone "third"; there is: first (First), second (Second))");
    m_devices->cameras.devices.clear();
    EXPECT_EQ(chosen("", CaptureDeviceKind::camera), "there is no camera: connect one, or leave --camera out");
    m_devices->microphones.authorization = CaptureAuthorization::denied;
    EXPECT_EQ(
        chosen("first"),
        "--microphone needs PipeWire, which does not answer in this session: start it, or leave --microphone out");
    m_platform.devices.reset();
    EXPECT_EQ(chosen("first").substr(0, 27), "--microphone needs PipeWire");
}

TEST_F(RecordDevices, PutTheBubbleInTheLowerRightCorner) {
    const FixedScreens screens(
        {{1, "Main", QRectF(0, 0, 800, 600), {}, 1}, {2, "Side", QRectF(800, 100, 400, 600), {}, 1}});
    FixedWindows windows;
    const auto frame = [&](const CaptureSelection& selection) { return bubbleFor(selection, screens, windows).frame; };
    EXPECT_EQ(frame(DisplaySelection{2, {}}), QRectF(1200 - 24 - 240, 100 + 24, 240, 240));
    EXPECT_EQ(frame(RegionSelection{1, QRectF(100, 50, 500, 400)}), QRectF(600 - 24 - 240, 50 + 24, 240, 240));
    const WindowSelection window{1, 7, QRectF(0, 0, 300, 300), {}};
    EXPECT_EQ(frame(window), QRectF(300 - 24 - 240, 24, 240, 240)) << "where it was";
    windows.live = QRectF(10, 20, 300, 300);
    EXPECT_EQ(frame(window), QRectF(310 - 24 - 240, 44, 240, 240)) << "where it is";
    const CameraOverlaySnapshot bubble = bubbleFor(window, screens, windows);
    EXPECT_TRUE(bubble.isVisible);
    EXPECT_EQ(bubble.shape, CameraOverlayShape::circle);
}

} // namespace
} // namespace keldra
