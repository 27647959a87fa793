// Cameras and microphones that come and go, and the daemon with them.

#include "platform/pipewire/PipeWireCaptureDevices.h"

#include "SoundSession.h"
#include "doubles/PumpedExecutor.h"

namespace keldra::test {
namespace {

constexpr auto camera = CaptureDeviceKind::camera;
constexpr auto microphone = CaptureDeviceKind::microphone;
using Options = QList<CaptureDeviceOption>;

class PipeWireCaptureDevicesTest : public SoundSession {
protected:
    /// Looks whenever a change was told, and at first.
    bool waitUntil(PipeWireCaptureDevices& devices, const std::function<bool()>& holds) {
        devices.setOnChanged([this] { ++m_changes; });
        return m_main.pumpUntil(holds);
    }

    PumpedExecutor m_main;
    int m_changes = 0;
};

TEST_F(PipeWireCaptureDevicesTest, KnowsAtOnceWhatIsThere) {
    startDaemon();
    const auto first = plugInMicrophone("first");
    const auto eye = plugInCamera("eye");
    PipeWireCaptureDevices devices(m_main);
    EXPECT_EQ(devices.authorization(microphone), CaptureAuthorization::authorized);
    EXPECT_TRUE(waitUntil(devices, [&] { return devices.defaultDeviceID(microphone) == "first"; }))
        << "who manages the session chooses a little later";
    EXPECT_EQ(devices.devices(microphone), (Options{{"first", "The first"}}));
    EXPECT_EQ(devices.devices(camera), (Options{{"eye", "The eye"}}));
    EXPECT_EQ(devices.defaultDeviceID(camera), "eye");
    EXPECT_EQ(PipeWireCaptureDevices(m_main).defaultDeviceID(microphone), "first");

    EXPECT_TRUE(m_main.answerOf<bool>([&](Completion<bool> done) { devices.requestAccess(camera, done); }).value());
}

TEST_F(PipeWireCaptureDevicesTest, TellsWhatComesAndGoes) {
    startDaemon();
    PipeWireCaptureDevices devices(m_main);
    EXPECT_EQ(devices.devices(microphone), Options());
    EXPECT_EQ(devices.defaultDeviceID(microphone), "");
    EXPECT_EQ(devices.defaultDeviceID(camera), "");

    auto first = plugInMicrophone("first");
    EXPECT_TRUE(waitUntil(devices, [&] { return devices.devices(microphone) == Options{{"first", "The first"}}; }));
    auto eye = plugInCamera("eye");
    EXPECT_TRUE(waitUntil(devices, [&] { return devices.devices(camera) == Options{{"eye", "The eye"}}; }));
    const auto second = plugInMicrophone("second");
    EXPECT_TRUE(waitUntil(devices, [&] { return devices.devices(microphone).size() == 2; }));
    EXPECT_TRUE(waitUntil(devices, [&] { return m_changes >= 1; })) << "several at once may be told once";

    m_changes = 0;
    first->terminate();
    EXPECT_TRUE(waitUntil(devices, [&] { return devices.defaultDeviceID(microphone) == "second"; }));
    EXPECT_EQ(devices.devices(microphone), (Options{{"second", "The second"}}));
    EXPECT_TRUE(waitUntil(devices, [&] { return m_changes >= 1; }));
    // A device that crashes goes too.
    eye->close();
    EXPECT_TRUE(waitUntil(devices, [&] { return devices.devices(camera).isEmpty(); }));
}

} // namespace
} // namespace keldra::test
