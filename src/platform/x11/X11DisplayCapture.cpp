#include "platform/x11/X11DisplayCapture.h"

#include "platform/x11/DisplayImage.h"
#include "platform/x11/X11Error.h"

#include <atomic>

namespace keldra {

/// One capture from start to stop.
class X11DisplayCapture::Run : public std::enable_shared_from_this<Run> {
public:
    Run(DisplayCaptureConfiguration configuration, std::shared_ptr<HostClock> clock,
        std::shared_ptr<MonitorNumbers> numbers, Executor& queue, FrameSink sink)
        : m_configuration(configuration)
        , m_clock(std::move(clock))
        , m_numbers(std::move(numbers))
        , m_queue(queue)
        , m_sink(std::move(sink)) {}

    Executor& queue() const { return m_queue; }
    /// Any thread: what waits in the queue is not delivered any more.
    void close() { m_isOpen = false; }

    Result<void> begin(Executor& worker) {
        TRY_LET(m_image, DisplayImage::open(m_configuration, *m_numbers));
        m_ticks = worker.every(m_configuration.minimumFrameInterval, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->tick();
        });
        worker.post([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->tick();
        });
        return {};
    }

    void end() {
        m_ticks.cancel();
        m_image.reset();
    }

private:
    void tick() {
        if (!m_image)
            return;
        Result<PixelBuffer> picture = m_image->readIfChanged();
        if (!picture) {
            end();
            m_queue.post([self = shared_from_this(), error = picture.error()] {
                if (self->m_isOpen && self->m_sink.stopped)
                    self->m_sink.stopped(error);
            });
            return;
        }
        if (!*picture)
            return;
        const bool isTaken = m_queue.tryPost(
            [self = shared_from_this(), frame = ScreenFrame{std::move(*picture), m_clock->now()}]() mutable {
                if (self->m_isOpen)
                    self->m_sink.frame(std::move(frame));
            });
        // A receiver that is late still gets the last picture of a screen that goes still.
        if (!isTaken)
            m_image->forget();
    }

    const DisplayCaptureConfiguration m_configuration;
    const std::shared_ptr<HostClock> m_clock;
    const std::shared_ptr<MonitorNumbers> m_numbers;
    Executor& m_queue;
    const FrameSink m_sink;
    std::atomic<bool> m_isOpen = true;
    std::unique_ptr<DisplayImage> m_image;
    Timer m_ticks;
};

X11DisplayCapture::X11DisplayCapture(std::shared_ptr<HostClock> clock, std::shared_ptr<MonitorNumbers> numbers,
                                     Executor& mainQueue)
    : m_clock(std::move(clock)), m_numbers(std::move(numbers)), m_mainQueue(mainQueue) {}

X11DisplayCapture::~X11DisplayCapture() {
    if (!m_run)
        return;
    m_run->close();
    m_worker.sync([this] { m_run->end(); });
}

void X11DisplayCapture::start(DisplayCaptureConfiguration configuration, Executor& queue, FrameSink sink,
                              Completion<void> done) {
    if (m_run) {
        m_mainQueue.post([done = std::move(done)] {
            done(fail(x11Error(X11ErrorCode::alreadyRunning, "The display capture is already running.")));
        });
        return;
    }
    m_run = std::make_shared<Run>(configuration, m_clock, m_numbers, queue, std::move(sink));
    m_worker.post([run = m_run, &worker = m_worker, &mainQueue = m_mainQueue, done = std::move(done)]() mutable {
        mainQueue.post([begun = run->begin(worker), done = std::move(done)] { done(begun); });
    });
}

void X11DisplayCapture::stop(Completion<void> done) {
    const auto run = std::exchange(m_run, nullptr);
    if (!run) {
        m_mainQueue.post([done = std::move(done)] { done({}); });
        return;
    }
    m_worker.post([run, &mainQueue = m_mainQueue, done = std::move(done)]() mutable {
        run->end();
        // By way of the frames' queue, so that no frame comes later; posted from main, because whoever hears of the end
        // may take the queue away, and this thread must not be busy with it then.
        mainQueue.post([run, &mainQueue, done = std::move(done)]() mutable {
            run->queue().post([run, &mainQueue, done = std::move(done)]() mutable {
                run->close();
                mainQueue.post([done = std::move(done)] { done({}); });
            });
        });
    });
}

} // namespace keldra
