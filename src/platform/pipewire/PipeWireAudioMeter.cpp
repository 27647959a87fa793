#include "platform/pipewire/PipeWireAudioMeter.h"

#include "platform/pipewire/DeviceStream.h"
#include "platform/pipewire/SoundCapture.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace keldra {
namespace {

constexpr double sampleRate = 48000;
/// The past counts the less the older it is, by this time constant.
constexpr double memorySeconds = 0.1;
/// Below what 24 bits hold.
constexpr double quietest = -160;

} // namespace

class PipeWireAudioMeter::Session {
public:
    explicit Session(const QString& deviceID)
        : m_stream({deviceID.toStdString(), DeviceStream::Device::Kind::microphone, false}, events()) {}

    std::optional<double> level() const {
        if (m_channelCount == 0)
            return std::nullopt;
        return std::clamp(10 * std::log10(std::max(m_power.load(), 1e-16)), quietest, 0.0);
    }

private:
    DeviceStream::Events events() {
        DeviceStream::Events events;
        events.formats = [](spa_pod_builder& builder) { return std::vector{soundFormat(builder, 0)}; };
        events.formatChosen = [this](pw_stream&, const spa_pod& format) {
            m_channelCount = channelsOf(format);
            return m_channelCount > 0;
        };
        events.process = [this](pw_stream& stream) {
            const int channelCount = m_channelCount;
            const CapturedBlocks blocks(stream, channelCount);
            blocks.forEach([&](const DeviceClock::Report& report, const float* samples) {
                measure(samples, report.frameCount, channelCount);
            });
        };
        events.closed = [this] {
            m_channelCount = 0;
            m_power = 0;
        };
        return events;
    }

    /// PipeWire's thread.
    void measure(const float* samples, std::int64_t frameCount, int channelCount) {
        double sum = 0;
        for (std::int64_t i = 0; i < frameCount; ++i)
            sum += double(samples[i * channelCount]) * samples[i * channelCount];
        const double kept = std::exp(-double(frameCount) / sampleRate / memorySeconds);
        m_power = kept * m_power + (1 - kept) * sum / double(std::max<std::int64_t>(1, frameCount));
    }

    /// 0 while the device is not heard.
    std::atomic<int> m_channelCount = 0;
    /// Mean square of the first channel; full scale is 1.
    std::atomic<double> m_power = 0;
    /// The first to go: nothing is called after it.
    DeviceStream m_stream;
};

PipeWireAudioMeter::PipeWireAudioMeter(std::shared_ptr<CaptureDevices> devices) : m_devices(std::move(devices)) {}

PipeWireAudioMeter::~PipeWireAudioMeter() = default;

bool PipeWireAudioMeter::start(const QString& deviceID) {
    stop();
    const auto microphones = m_devices->devices(CaptureDeviceKind::microphone);
    const bool isThere =
        std::any_of(microphones.begin(), microphones.end(), [&](const auto& each) { return each.id == deviceID; });
    if (isThere)
        m_session = std::make_unique<Session>(deviceID);
    return isThere;
}

void PipeWireAudioMeter::stop() {
    m_session.reset();
}

std::optional<double> PipeWireAudioMeter::averagePowerLevel() const {
    return m_session ? m_session->level() : std::nullopt;
}

} // namespace keldra
