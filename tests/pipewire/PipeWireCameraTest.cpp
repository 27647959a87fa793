// Cameras in every format that we read: their pictures come mirrored, in order, and from nobody else.

#include "SoundSession.h"
#include "doubles/PumpedExecutor.h"
#include "platform/pipewire/CameraFormats.h"
#include "platform/pipewire/PipeWireCameraSession.h"
#include "scene/SceneReader.h"

#include <QBuffer>
#include <QImage>

namespace keldra::test {
namespace {

constexpr std::uint32_t plainRgb = 0xc83c8c;

/// What lies in a mirror.
PixelBuffer unmirrored(const PixelBuffer& picture) {
    PixelBuffer turned = PixelBuffer::allocate(PixelFormat::bgra, picture.width(), picture.height());
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            std::copy_n(picture.row(0, y) + 4 * x, 4, turned.mutableRow(0, y) + 4 * (picture.width() - 1 - x));
    return turned;
}

void expectColour(std::uint32_t seen, std::uint32_t wanted, int tolerance) {
    for (const int shift : {0, 8, 16})
        EXPECT_NEAR(int(seen >> shift & 0xff), int(wanted >> shift & 0xff), tolerance)
            << std::hex << seen << " for " << wanted;
}

class PipeWireCameraTest : public SoundSession {
protected:
    void configure(PipeWireCameraSession& session, const QString& device) {
        EXPECT_TRUE(m_main.answerOf<void>([&](Completion<void> done) {
            session.configure(
                device, m_main, [this](PixelBuffer frame) { m_frames.push_back(std::move(frame)); }, done);
        }));
    }
    bool start(PipeWireCameraSession& session) {
        return m_main.answerOf<bool>([&](Completion<bool> done) { session.start(done); }).value();
    }
    void stop(PipeWireCameraSession& session) {
        EXPECT_TRUE(m_main.answerOf<void>([&](Completion<void> done) { session.stop(done); }));
    }
    [[nodiscard]] bool see(std::size_t count) {
        m_frames.clear();
        return m_main.pumpUntil([&] { return m_frames.size() >= count; });
    }

    PumpedExecutor m_main;
    std::vector<PixelBuffer> m_frames;
};

TEST_F(PipeWireCameraTest, ShowsEveryFormatMirrored) {
    startDaemon();
    for (const char* format : {"yuy2", "uyvy", "nv12", "i420", "bgrx", "rgbx"}) {
        SCOPED_TRACE(format);
        const auto device = plugInCamera("eye", {"--format", format, "--every", "0"});
        PipeWireCameraSession session(m_main);
        configure(session, "eye");
        ASSERT_TRUE(start(session));
        ASSERT_TRUE(see(4));
        stop(session);
        std::uint32_t last = 0;
        for (const PixelBuffer& frame : m_frames) {
            ASSERT_EQ(frame.format(), PixelFormat::bgra);
            ASSERT_EQ(frame.width(), 640);
            ASSERT_EQ(frame.height(), 480);
            const PixelBuffer picture = unmirrored(frame);
            const auto number = scene::readNumber(picture, scene::frameNumber);
            ASSERT_TRUE(number);
            EXPECT_GT(*number, last);
            last = *number;
            // A picture's bar is nowhere near where it will be a quarter of the width on.
            const int bar = int(*number * 8 % 640);
            expectColour(scene::colourAt(picture, (bar + 320) % 640 / 2 * 2, 400), plainRgb, 3);
            expectColour(scene::colourAt(picture, 100, 60), scene::backgroundRgb, 3);
            EXPECT_EQ(picture.row(0, 400)[3], 255) << "opaque";
        }
    }
}

TEST_F(PipeWireCameraTest, PrefersASharpPicture) {
    startDaemon();
    const auto device = plugInCamera("eye", {"--size", "1280x720"});
    PipeWireCameraSession session(m_main);
    configure(session, "eye");
    ASSERT_TRUE(start(session));
    ASSERT_TRUE(see(2));
    EXPECT_EQ(m_frames.back().width(), 1280);
    stop(session);
}

TEST_F(PipeWireCameraTest, IsSeenAgainAfterItWasUnplugged) {
    startDaemon();
    const auto other = plugInCamera("other", {"--format", "bgrx"});
    auto device = plugInCamera("eye");
    PipeWireCameraSession session(m_main);
    configure(session, "eye");
    ASSERT_TRUE(start(session));
    EXPECT_TRUE(start(session)) << "which it does already";
    device->terminate();
    m_frames.clear();
    device = plugInCamera("eye", {"--size", "800x600"});
    // Frames that were on their way have the old size, another camera's too.
    EXPECT_TRUE(m_main.pumpUntil([&] { return !m_frames.empty() && m_frames.back().width() == 800; }));
    stop(session);
    const std::size_t seen = m_frames.size();
    (void)m_main.pumpUntil([] { return true; });
    EXPECT_EQ(m_frames.size(), seen) << "nothing after the stop";

    configure(session, "other");
    EXPECT_TRUE(start(session));
    ASSERT_TRUE(see(1));
    EXPECT_EQ(m_frames.back().width(), 640);
    stop(session);
}

TEST_F(PipeWireCameraTest, SaysThatADeviceIsNotThere) {
    PipeWireCameraSession session(m_main);
    configure(session, "nobody");
    EXPECT_FALSE(start(session)) << "without a daemon";
    startDaemon();
    const auto other = plugInCamera("other");
    EXPECT_FALSE(start(session));
    configure(session, "other");
    EXPECT_TRUE(start(session));

    // A stop that overtakes a start.
    stop(session);
    std::vector<std::string> answers;
    session.start([&](const Result<bool>& started) { answers.push_back(*started ? "yes" : "no"); });
    session.stop([&](const Result<void>&) { answers.push_back("stopped"); });
    EXPECT_TRUE(m_main.pumpUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers.back(), "stopped");
}

TEST(CameraPicture, IsReadFromJpeg) {
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(qRgb(200, 60, 140));
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 16; ++x)
            image.setPixel(x, y, qRgb(20, 200, 30));
    QByteArray bytes;
    QBuffer file(&bytes);
    file.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&file, "JPEG", 95));
    const CameraPlane plane{reinterpret_cast<const std::uint8_t*>(bytes.constData()), std::size_t(bytes.size()), 0};
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 64, 48);
    ASSERT_TRUE(readCameraPicture({CameraEncoding::jpeg, 64, 48}, {plane}, picture));
    expectColour(scene::colourAt(picture, 60, 20), 0x14c81e, 12);
    expectColour(scene::colourAt(picture, 20, 20), plainRgb, 12);
    // Of another size, and no JPEG at all.
    PixelBuffer larger = PixelBuffer::allocate(PixelFormat::bgra, 640, 480);
    EXPECT_FALSE(readCameraPicture({CameraEncoding::jpeg, 640, 480}, {plane}, larger));
    EXPECT_FALSE(readCameraPicture({CameraEncoding::jpeg, 64, 48}, {{plane.data + 100, 50, 0}}, picture));
}

TEST(CameraPicture, IsNotReadBeyondItsMemory) {
    struct Row {
        CameraEncoding encoding;
        std::size_t size;
    };
    const Row rows[] = {{CameraEncoding::yuy2, 64 * 2 * 48},     {CameraEncoding::uyvy, 64 * 2 * 48},
                        {CameraEncoding::nv12, 64 * 48 * 3 / 2}, {CameraEncoding::i420, 64 * 48 * 3 / 2},
                        {CameraEncoding::bgrx, 64 * 4 * 48},     {CameraEncoding::rgbx, 64 * 4 * 48}};
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 64, 48);
    for (const Row& row : rows) {
        const std::vector<std::uint8_t> bytes(row.size, 128);
        const CameraFormat format{row.encoding, 64, 48};
        EXPECT_TRUE(readCameraPicture(format, {{bytes.data(), row.size, 0}}, picture)) << int(row.encoding);
        EXPECT_FALSE(readCameraPicture(format, {{bytes.data(), row.size - 1, 0}}, picture)) << int(row.encoding);
        EXPECT_FALSE(readCameraPicture(format, {{bytes.data(), row.size, 1000}}, picture)) << int(row.encoding);
        EXPECT_FALSE(readCameraPicture(format, {{bytes.data(), row.size, 8}}, picture)) << int(row.encoding);
        EXPECT_FALSE(readCameraPicture(format, {}, picture));
    }
}

} // namespace
} // namespace keldra::test
