#include "platform/pipewire/PipeWireMicrophoneStream.h"

#include "platform/pipewire/CaptureRing.h"
#include "platform/pipewire/DeviceStream.h"
#include "platform/pipewire/SoundCapture.h"
#include "platform/pipewire/StartAnswer.h"
#include "platform/pipewire/SteadySound.h"

#include <algorithm>
#include <atomic>
#include <optional>

namespace keldra {
namespace {

constexpr int mostChannels = 2;

Error couldNotConnect(const QString& deviceID) {
    return Error{"Microphone", 1, "Could not connect the microphone.", {{"device", deviceID.toStdString()}}};
}

} // namespace

/// From a start to its stop.
class PipeWireMicrophoneStream::Session {
public:
    Session(const QString& deviceID, Executor& queue, BufferHandler buffers, Executor& mainQueue,
            Completion<AudioFormat> done)
        : m_queue(queue)
        , m_buffers(std::move(buffers))
        , m_answer(mainQueue, std::move(done), fail(couldNotConnect(deviceID)))
        , m_stream({deviceID.toStdString(), DeviceStream::Device::Kind::microphone}, events()) {}

private:
    DeviceStream::Events events() {
        DeviceStream::Events events;
        events.formats = [this](spa_pod_builder& builder) {
            // A device that comes back is heard in the format that was promised.
            return std::vector{soundFormat(builder, m_sound ? m_sound->format().channelCount : 0)};
        };
        events.formatChosen = [this](pw_stream&, const spa_pod& format) { return begin(channelsOf(format)); };
        events.process = [this](pw_stream& stream) { take(stream); };
        events.woken = [this] { convert(); };
        events.closed = [this] {
            convert();
            m_sound->breakOff();
        };
        events.refused = [this] { m_answer.giveOtherwise(); };
        return events;
    }

    bool begin(int channelCount) {
        if (channelCount == 0)
            return false;
        m_channelCount = channelCount;
        if (!m_sound)
            m_sound.emplace(std::min(channelCount, mostChannels), [this](AudioBuffer sound) {
                m_queue.post([buffers = m_buffers, sound = std::move(sound)] { buffers(sound); });
            });
        m_answer.give(m_sound->format());
        return true;
    }

    /// PipeWire's thread.
    void take(pw_stream& stream) {
        const int channelCount = m_channelCount;
        const CapturedBlocks blocks(stream, channelCount);
        blocks.forEach([&](const DeviceClock::Report& report, const float* samples) {
            m_ring.write(report, channelCount, samples);
        });
        m_stream.wake();
    }

    void convert() {
        std::vector<float> samples;
        while (const auto report = m_ring.read(samples))
            m_sound->hear(*report, firstChannels(std::move(samples), report->frameCount));
    }

    /// Of a device with many, the first ones.
    std::vector<float> firstChannels(std::vector<float> samples, std::int64_t frameCount) const {
        const auto wanted = std::size_t(m_sound->format().channelCount);
        const std::size_t given = frameCount > 0 ? samples.size() / std::size_t(frameCount) : wanted;
        if (given <= wanted)
            return samples;
        for (std::size_t frame = 0; frame < std::size_t(frameCount); ++frame)
            std::copy_n(samples.data() + frame * given, wanted, samples.data() + frame * wanted);
        samples.resize(std::size_t(frameCount) * wanted);
        return samples;
    }

    Executor& m_queue;
    const BufferHandler m_buffers;
    StartAnswer<AudioFormat> m_answer;
    std::atomic<int> m_channelCount = 0;
    CaptureRing m_ring;
    std::optional<SteadySound> m_sound;
    /// The first to go: nothing is called after it.
    DeviceStream m_stream;
};

PipeWireMicrophoneStream::PipeWireMicrophoneStream(Executor& mainQueue) : m_mainQueue(mainQueue) {}

PipeWireMicrophoneStream::~PipeWireMicrophoneStream() = default;

void PipeWireMicrophoneStream::start(const QString& deviceID, Executor& queue, BufferHandler buffers,
                                     Completion<AudioFormat> done) {
    m_queue = &queue;
    m_session = std::make_shared<Session>(deviceID, queue, std::move(buffers), m_mainQueue, std::move(done));
}

void PipeWireMicrophoneStream::stop(Completion<void> done) {
    if (!m_session)
        return m_mainQueue.post([done = std::move(done)] { done({}); });
    // Closing waits for a thread, which main does not; and it delivers what is left, behind which the answer comes.
    m_queue->post([session = std::move(m_session), &queue = *m_queue, &main = m_mainQueue,
                   done = std::move(done)]() mutable {
        session.reset();
        queue.post([&main, done = std::move(done)]() mutable { main.post([done = std::move(done)] { done({}); }); });
    });
}

} // namespace keldra
