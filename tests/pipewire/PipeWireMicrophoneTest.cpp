// A microphone against a real daemon: nothing it says is lost or misplaced, and no other is ever heard in its place.

#include "SoundSession.h"
#include "doubles/PumpedExecutor.h"
#include "platform/pipewire/PipeWireAudioMeter.h"
#include "platform/pipewire/PipeWireCaptureDevices.h"
#include "platform/pipewire/PipeWireMicrophoneStream.h"

#include <cmath>

namespace keldra::test {
namespace {

constexpr int rate = 48000;

/// What a microphone stream delivers, on the test's own thread.
class Ear {
public:
    explicit Ear(PumpedExecutor& main) : m_main(main), m_stream(main) {}

    Result<AudioFormat> start(const QString& deviceID) {
        return m_main.answerOf<AudioFormat>([&](Completion<AudioFormat> done) {
            m_stream.start(
                deviceID, m_main, [this](AudioBuffer sound) { m_heard.push_back(std::move(sound)); }, done);
        });
    }
    void stop() {
        EXPECT_TRUE(m_main.answerOf<void>([&](Completion<void> done) { m_stream.stop(done); }));
    }
    [[nodiscard]] bool hear(double seconds) {
        return m_main.pumpUntil([&] { return this->seconds() >= seconds; });
    }
    double seconds() const {
        std::int64_t frames = 0;
        for (const AudioBuffer& each : m_heard)
            frames += each.frameCount();
        return double(frames) / rate;
    }
    void forget() { m_heard.clear(); }

    /// Without holes in the times: when it begins, and its samples of the first channel.
    struct Piece {
        double begin = 0;
        std::vector<double> samples;
        double end() const { return begin + double(samples.size()) / rate; }
    };
    std::vector<Piece> pieces() const {
        std::vector<Piece> found;
        MediaTime next;
        for (const AudioBuffer& each : m_heard) {
            EXPECT_EQ(each.time().timescale(), rate) << "whole samples";
            if (next.isValid() && each.time() < next)
                ADD_FAILURE() << "sound overlaps at " << next.seconds();
            if (!next.isValid() || each.time() != next)
                found.push_back({each.time().seconds(), {}});
            next = each.endTime();
            for (std::int64_t i = 0; i < each.frameCount(); ++i)
                found.back().samples.push_back(sampleAt(each, i));
        }
        return found;
    }

private:
    static double sampleAt(const AudioBuffer& buffer, std::int64_t frame) {
        const std::byte* bytes = buffer.bytes() + frame * buffer.format().bytesPerFrame();
        const std::uint32_t word =
            std::uint32_t(bytes[0]) << 8 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 24;
        return double(std::int32_t(word) >> 8) / (1 << 23);
    }

    PumpedExecutor& m_main;
    std::vector<AudioBuffer> m_heard;
    PipeWireMicrophoneStream m_stream;
};

class PipeWireMicrophoneTest : public SoundSession {
protected:
    PumpedExecutor m_main;
};

TEST_F(PipeWireMicrophoneTest, LosesNoSample) {
    startDaemon();
    const auto device = plugInMicrophone("sine", {"--signal", "sine", "--ppm", "200", "--late", "4"});
    Ear ear(m_main);
    const auto format = ear.start("sine");
    ASSERT_TRUE(format);
    EXPECT_EQ(*format, (AudioFormat{SampleKind::int24, rate, 1}));
    ASSERT_TRUE(ear.hear(4));
    ear.stop();

    // Of a sine each sample follows from the two before it.
    const double follows = 2 * std::cos(2 * M_PI * 480 / rate);
    const auto pieces = ear.pieces();
    double longest = 0;
    for (const auto& piece : pieces) {
        longest = std::max(longest, piece.end() - piece.begin);
        // The resampler begins and ends with less than it needs.
        for (std::size_t i = 50; i + 50 < piece.samples.size(); ++i) {
            const double expected = follows * piece.samples[i - 1] - piece.samples[i - 2];
            ASSERT_NEAR(piece.samples[i], expected, 2e-4) << "at " << piece.begin + double(i) / rate;
        }
        EXPECT_NEAR(*std::max_element(piece.samples.begin(), piece.samples.end()), 0.5, 0.002);
    }
    // Where nobody may be prompt, a busy machine's daemon loses sound before it reaches us.
    EXPECT_GT(longest, 1);
    const std::size_t count = pieces.size();
    EXPECT_LT(count, 4U);
}

TEST_F(PipeWireMicrophoneTest, HearsBeepsWhenTheySounded) {
    startDaemon();
    for (const char* ppm : {"200", "-200"}) {
        const auto device = plugInMicrophone("beeper", {"--every", "0.25", "--ppm", ppm, "--quantum", "512"});
        Ear ear(m_main);
        ASSERT_TRUE(ear.start("beeper"));
        ASSERT_TRUE(ear.hear(3));
        ear.stop();
        device->terminate();

        std::vector<double> onsets;
        for (const auto& piece : ear.pieces()) {
            std::size_t silent = 0;
            for (std::size_t i = 0; i < piece.samples.size(); ++i) {
                // A resampled beep rings a little before it begins.
                const bool isLoud = std::abs(piece.samples[i]) > 0.25;
                if (isLoud && silent > rate / 10)
                    onsets.push_back(piece.begin + double(i) / rate);
                silent = isLoud ? 0 : silent + 1;
            }
        }
        std::vector<double> reported;
        for (std::string line = device->readLine(); !line.empty(); line = device->readLine())
            reported.push_back(std::stod(line.substr(5)) * 1e-6);
        EXPECT_GE(onsets.size(), 10U) << ear.pieces().size() << " pieces";
        for (const double onset : onsets) {
            const auto nearest = std::min_element(reported.begin(), reported.end(), [&](double a, double b) {
                return std::abs(a - onset) < std::abs(b - onset);
            });
            ASSERT_NE(nearest, reported.end());
            EXPECT_NEAR(onset, *nearest, 0.003);
        }
    }
}

TEST_F(PipeWireMicrophoneTest, FallsSilentWhenUnpluggedAndIsHeardAgain) {
    startDaemon();
    const auto other = plugInMicrophone("other", {"--signal", "sine"});
    const std::vector<std::string> silent{"--every", "1000"};
    auto device = plugInMicrophone("mine", silent);
    PipeWireCaptureDevices devices(m_main);
    Ear ear(m_main);
    ASSERT_TRUE(ear.start("mine"));
    ASSERT_TRUE(ear.hear(0.3));

    device->terminate();
    ASSERT_TRUE(m_main.pumpUntil([&] { return devices.devices(CaptureDeviceKind::microphone).size() == 1; }));
    // A program comes back within what a clock's estimate is off by; a hand does not.
    Ear meanwhile(m_main);
    ASSERT_TRUE(meanwhile.start("other"));
    ASSERT_TRUE(meanwhile.hear(0.3));
    meanwhile.stop();
    device = plugInMicrophone("mine", silent);
    const double before = ear.seconds();
    ASSERT_TRUE(ear.hear(before + 0.5)) << "the same device is heard again";
    // And the daemon with all devices.
    stopDaemon();
    ASSERT_TRUE(m_main.pumpUntil([&] { return devices.devices(CaptureDeviceKind::microphone).isEmpty(); }));
    startDaemon();
    device = plugInMicrophone("mine", silent);
    const double later = ear.seconds();
    ASSERT_TRUE(ear.hear(later + 0.5));
    ear.stop();

    const auto pieces = ear.pieces();
    EXPECT_GE(pieces.size(), 3U) << "what was missed is a hole";
    for (const auto& piece : pieces)
        for (const double sample : piece.samples)
            ASSERT_NEAR(sample, 0, 0.001) << "never the other one";
    const std::size_t count = pieces.size();
    const double heard = ear.seconds();
    (void)m_main.pumpUntil([] { return true; });
    EXPECT_EQ(ear.seconds(), heard) << "nothing after the stop";
    EXPECT_LT(count, 8U);
}

TEST_F(PipeWireMicrophoneTest, SaysThatADeviceIsNotThere) {
    {
        Ear ear(m_main);
        const auto answer = ear.start("nobody");
        ASSERT_FALSE(answer) << "without a daemon";
        EXPECT_EQ(answer.error().message, "Could not connect the microphone.");
        ear.stop();
    }
    startDaemon();
    const auto other = plugInMicrophone("other");
    Ear ear(m_main);
    EXPECT_FALSE(ear.start("nobody"));
    ear.stop();
}

TEST_F(PipeWireMicrophoneTest, IsStoppedBeforeItStarted) {
    startDaemon();
    const auto device = plugInMicrophone("mine");
    PipeWireMicrophoneStream stream(m_main);
    std::vector<std::string> answers;
    stream.start(
        "mine", m_main, [](const AudioBuffer&) {},
        [&](const Result<AudioFormat>& format) { answers.push_back(format ? "started" : "refused"); });
    stream.stop([&](const Result<void>&) { answers.push_back("stopped"); });
    EXPECT_TRUE(m_main.pumpUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers.back(), "stopped");
}

TEST_F(PipeWireMicrophoneTest, IsMeasured) {
    startDaemon();
    auto device = plugInMicrophone("sine", {"--signal", "sine", "--channels", "2"});
    const auto devices = std::make_shared<PipeWireCaptureDevices>(m_main);
    PipeWireAudioMeter meter(devices);
    EXPECT_FALSE(meter.averagePowerLevel());
    EXPECT_FALSE(meter.start("nobody"));
    ASSERT_TRUE(meter.start("sine"));
    // The meter is asked, it tells nothing; so a stream's buffers give the beat.
    Ear ear(m_main);
    ASSERT_TRUE(ear.start("sine"));
    ASSERT_TRUE(ear.hear(1));
    ASSERT_TRUE(meter.averagePowerLevel());
    EXPECT_NEAR(*meter.averagePowerLevel(), 20 * std::log10(0.5) - 3.01, 0.2);

    device->terminate();
    EXPECT_TRUE(m_main.pumpUntil([&] { return devices->devices(CaptureDeviceKind::microphone).isEmpty(); }));
    device = plugInMicrophone("sine", {"--every", "1000"});
    const double before = ear.seconds();
    ASSERT_TRUE(ear.hear(before + 1));
    ASSERT_TRUE(meter.averagePowerLevel());
    EXPECT_LT(*meter.averagePowerLevel(), -60) << "it forgets";
    meter.stop();
    EXPECT_FALSE(meter.averagePowerLevel());
    ear.stop();
}

} // namespace
} // namespace keldra::test
