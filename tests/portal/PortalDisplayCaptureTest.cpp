// A screen that is seen only by its user's leave: a portal that is a double gives a camera's node for it.

#include "platform/portal/PortalDisplayCapture.h"

#include "MockPortal.h"
#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "doubles/Waiting.h"
#include "pipewire/SoundSession.h"
#include "platform/pipewire/PipeWireConnection.h"
#include "platform/portal/ScreenCastFrame.h"
#include "scene/SceneReader.h"

#include <atomic>

namespace keldra::test {
namespace {

class PortalDisplayCaptureTest : public SoundSession {
protected:
    /// The PipeWire id of a camera that stands for the screen.
    std::uint32_t plugInScreen() {
        startDaemon();
        m_device = plugInCamera("screen", {"--format", "bgrx", "--every", "0"});
        std::atomic<std::uint32_t> node = 0;
        const PipeWireConnection connection({.appeared = [&](const PipeWireNode& each) {
            if (each.name == "screen")
                node = each.id;
        }});
        EXPECT_TRUE(runUntil([&] { return node != 0; }));
        return node;
    }

    Result<void> start() {
        DisplayCaptureConfiguration configuration;
        configuration.minimumFrameInterval = std::chrono::milliseconds(16);
        std::optional<Result<PickedDisplay>> picked;
        PortalDisplayCapture::pick(m_clock, m_main, m_restoreToken, configuration,
                                   [&](Result<PickedDisplay> display) { picked = std::move(display); });
        EXPECT_FALSE(picked) << "never before the call returns";
        EXPECT_TRUE(runUntil([&] { return picked.has_value(); }));
        if (!*picked)
            return fail(picked->error());
        EXPECT_EQ((*picked)->whole, (PixelRect{0, 0, 640, 480})) << "the size that the screen has";
        m_capture = (*picked)->capture;
        configuration.crop = (*picked)->whole;
        std::optional<Result<void>> answer;
        m_capture->start(configuration, m_main,
                         {[this](ScreenFrame frame) { m_frames.push_back(std::move(frame)); },
                          [this](const Error& error) { m_ends.push_back(error.message); }},
                         [&](Result<void> started) { answer = std::move(started); });
        EXPECT_FALSE(answer) << "never before the call returns";
        EXPECT_TRUE(runUntil([&] { return answer.has_value(); }));
        return *answer;
    }
    void stop() {
        bool isStopped = false;
        m_capture->stop([&](const Result<void>&) { isStopped = true; });
        EXPECT_TRUE(runUntil([&] { return isStopped; }));
    }

    MainQueue m_main{std::make_shared<MainScheduler>()};
    std::unique_ptr<ChildProcess> m_device;
    std::shared_ptr<SystemHostClock> m_clock = std::make_shared<SystemHostClock>();
    std::shared_ptr<QString> m_restoreToken = std::make_shared<QString>();
    std::vector<ScreenFrame> m_frames;
    std::vector<std::string> m_ends;
    std::shared_ptr<DisplayCapture> m_capture;
};

TEST_F(PortalDisplayCaptureTest, ShowsTheScreenUntilItIsStopped) {
    MockPortal portal(plugInScreen());
    ASSERT_TRUE(start());
    EXPECT_EQ(portal.dialogs, 1);
    EXPECT_EQ(portal.sources.value("types").toUInt(), 1U) << "a monitor";
    EXPECT_EQ(portal.sources.value("cursor_mode").toUInt(), 2U) << "with the pointer in it";
    ASSERT_TRUE(runUntil([&] { return m_frames.size() >= 5; }));
    stop();
    const std::size_t count = m_frames.size();
    std::uint32_t last = 0;
    MediaTime lastTime = MediaTime::zero();
    for (const ScreenFrame& frame : m_frames) {
        const auto number = scene::readNumber(frame.pixels, scene::frameNumber);
        ASSERT_TRUE(number);
        EXPECT_GT(*number, last);
        EXPECT_GT(frame.time, lastTime);
        last = *number;
        lastTime = frame.time;
    }
    ASSERT_TRUE(runUntil([&] { return portal.closedSessions == 1; })) << "the desktop's sign of a recording goes";
    EXPECT_EQ(m_frames.size(), count);
    EXPECT_TRUE(m_ends.empty());
}

TEST_F(PortalDisplayCaptureTest, TellsWhatTheDesktopOrItsUserDoes) {
    {
        const auto without = start();
        ASSERT_FALSE(without) << "there is no portal";
        EXPECT_FALSE(without.error().message.empty());
    }
    MockPortal portal(plugInScreen());
    portal.answer = 1;
    const auto refused = start();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Screen recording access was not granted");
    portal.answer = 0;
    ASSERT_TRUE(start());
    ASSERT_TRUE(runUntil([&] { return !m_frames.empty(); }));
    portal.endSession();
    ASSERT_TRUE(runUntil([&] { return !m_ends.empty(); }));
    EXPECT_EQ(m_ends, std::vector<std::string>{"The desktop ended the recording of the screen."});
    stop();
}

TEST_F(PortalDisplayCaptureTest, AScreenThatGoesEndsItOnce) {
    MockPortal portal(plugInScreen());
    ASSERT_TRUE(start());
    ASSERT_TRUE(runUntil([&] { return !m_frames.empty(); }));
    m_device.reset();
    ASSERT_TRUE(runUntil([&] { return !m_ends.empty(); }));
    stop();
    EXPECT_EQ(m_ends.size(), 1U);
}

/// Four by two pixels that say where they are: red counts columns, green rows.
std::vector<std::uint8_t> grid(bool isRedFirst) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) {
            const auto red = std::uint8_t(10 * x);
            const auto green = std::uint8_t(100 * y);
            const std::uint8_t pixel[] = {isRedFirst ? red : std::uint8_t(7), green, isRedFirst ? std::uint8_t(7) : red,
                                          0};
            bytes.insert(bytes.end(), std::begin(pixel), std::end(pixel));
        }
    return bytes;
}

TEST(ScreenCastFrame, IsThePictureAsItIs) {
    for (const bool isRedFirst : {false, true}) {
        const auto bytes = grid(isRedFirst);
        // The last column of an odd display is left out.
        PixelBuffer frame = PixelBuffer::allocate(PixelFormat::bgra, 3, 2);
        copyScreenCastPicture({bytes.data(), 16, 4, 2, isRedFirst}, frame);
        EXPECT_EQ(scene::colourAt(frame, 0, 0), 0x000007U);
        EXPECT_EQ(scene::colourAt(frame, 2, 0), 0x140007U);
        EXPECT_EQ(scene::colourAt(frame, 1, 1), 0x0a6407U);
        EXPECT_EQ(frame.row(0, 0)[3], 255) << "opaque";
    }
    // A display that got another size meanwhile.
    const auto bytes = grid(false);
    PixelBuffer frame = PixelBuffer::allocate(PixelFormat::bgra, 8, 8);
    copyScreenCastPicture({bytes.data(), 16, 4, 2, false}, frame);
    EXPECT_EQ(scene::colourAt(frame, 4, 1), 0U) << "it is fitted into the middle";
    EXPECT_EQ(scene::colourAt(frame, 4, 6), 0U);
    EXPECT_NEAR(int(scene::colourAt(frame, 7, 3) >> 16), 30, 6);
}

} // namespace
} // namespace keldra::test
