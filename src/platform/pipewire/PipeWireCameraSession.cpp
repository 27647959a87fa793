#include "platform/pipewire/PipeWireCameraSession.h"

#include "imaging/PixelBufferPool.h"
#include "platform/pipewire/CameraFormats.h"
#include "platform/pipewire/DeviceStream.h"
#include "platform/pipewire/StartAnswer.h"

#include <pipewire/pipewire.h>

namespace keldra {
namespace {

/// Pictures that may be out: the newest, those that are being drawn, and the one on its way.
constexpr int poolLimit = 6;

} // namespace

/// From a start to its stop.
class PipeWireCameraSession::Run {
public:
    Run(const QString& deviceID, Executor& queue, FrameHandler frames, Executor& mainQueue, Completion<bool> done)
        : m_queue(queue)
        , m_frames(std::move(frames))
        , m_answer(mainQueue, std::move(done), false)
        , m_stream({deviceID.toStdString(), DeviceStream::Device::Kind::camera}, events()) {}

private:
    DeviceStream::Events events() {
        DeviceStream::Events events;
        events.formats = cameraFormats;
        events.formatChosen = [this](pw_stream&, const spa_pod& chosen) {
            m_format = cameraFormatOf(chosen);
            if (m_format)
                m_pool.emplace(PixelFormat::bgra, m_format->width, m_format->height, poolLimit);
            return m_format.has_value();
        };
        events.process = [this](pw_stream& stream) { take(stream); };
        events.refused = [this] { m_answer.giveOtherwise(); };
        return events;
    }

    /// Of several that wait only the newest is wanted.
    void take(pw_stream& stream) {
        pw_buffer* newest = nullptr;
        while (pw_buffer* buffer = pw_stream_dequeue_buffer(&stream)) {
            if (newest != nullptr)
                pw_stream_queue_buffer(&stream, newest);
            newest = buffer;
        }
        if (newest == nullptr)
            return;
        deliver(*newest->buffer);
        pw_stream_queue_buffer(&stream, newest);
    }

    void deliver(const spa_buffer& buffer) {
        PixelBuffer picture = m_pool ? m_pool->take() : PixelBuffer();
        if (!picture)
            return;
        std::vector<CameraPlane> planes;
        for (std::uint32_t i = 0; i < buffer.n_datas; ++i) {
            const spa_data& data = buffer.datas[i];
            if (data.data == nullptr || data.chunk->offset > data.maxsize)
                return;
            const std::size_t size = std::min(data.chunk->size, data.maxsize - data.chunk->offset);
            planes.push_back(
                {static_cast<const std::uint8_t*>(data.data) + data.chunk->offset, size, data.chunk->stride});
        }
        if (!readCameraPicture(*m_format, planes, picture))
            return;
        m_answer.give(true);
        // Whoever is behind gets a newer one.
        (void)m_queue.tryPost([frames = m_frames, picture] { frames(picture); });
    }

    Executor& m_queue;
    const FrameHandler m_frames;
    StartAnswer<bool> m_answer;
    std::optional<CameraFormat> m_format;
    std::optional<PixelBufferPool> m_pool;
    /// The first to go: nothing is called after it.
    DeviceStream m_stream;
};

PipeWireCameraSession::PipeWireCameraSession(Executor& mainQueue) : m_mainQueue(mainQueue) {}

PipeWireCameraSession::~PipeWireCameraSession() = default;

void PipeWireCameraSession::configure(const QString& deviceID, Executor& queue, FrameHandler frames,
                                      Completion<void> done) {
    endRun();
    m_deviceID = deviceID;
    m_queue = &queue;
    m_frames = std::move(frames);
    m_mainQueue.post([done = std::move(done)] { done({}); });
}

void PipeWireCameraSession::start(Completion<bool> done) {
    const bool isRunning = m_start && m_start->answer == true;
    if (!m_queue || isRunning)
        return m_mainQueue.post([isRunning, done = std::move(done)] { done(isRunning); });
    if (m_start && !m_start->answer)
        return m_start->waiting.push_back(std::move(done));
    endRun();
    m_start = std::make_shared<Start>();
    m_start->waiting.push_back(std::move(done));
    m_run = std::make_shared<Run>(m_deviceID, *m_queue, m_frames, m_mainQueue,
                                  [start = m_start](const Result<bool>& answer) {
                                      start->answer = answer.value_or(false);
                                      for (const auto& each : std::exchange(start->waiting, {}))
                                          each(*start->answer);
                                  });
}

void PipeWireCameraSession::stop(Completion<void> done) {
    if (!m_queue)
        return m_mainQueue.post([done = std::move(done)] { done({}); });
    endRun();
    // Behind the last frame, and the answer of a start that it overtook.
    m_queue->post([&queue = *m_queue, &main = m_mainQueue, done = std::move(done)]() mutable {
        queue.post([&main, done = std::move(done)]() mutable { main.post([done = std::move(done)] { done({}); }); });
    });
}

/// Closing waits for a thread, which main does not.
void PipeWireCameraSession::endRun() {
    m_start.reset();
    if (m_run)
        m_queue->post([run = std::move(m_run)]() mutable { run.reset(); });
}

} // namespace keldra
