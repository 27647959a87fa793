#include "platform/portal/PortalDisplayCapture.h"

#include "async/AwaitCompletion.h"
#include "imaging/PixelBufferPool.h"
#include "platform/portal/PortalRequest.h"
#include "platform/portal/ScreenCastFrame.h"
#include "platform/portal/ScreenCastSession.h"

#include <QPointer>

#include <atomic>
#include <cmath>

namespace keldra {
namespace {

/// Pictures that may be out: those in the recorder, the one that waits, and the one that is made.
constexpr int poolLimit = 8;

} // namespace

/// One capture from start to stop. Made and ended on main; pictures come on PipeWire's thread.
class PortalDisplayCapture::Run : public std::enable_shared_from_this<Run> {
public:
    Run(DisplayCaptureConfiguration configuration, const std::optional<Screen>& screen,
        std::shared_ptr<HostClock> clock, Executor& queue, FrameSink sink)
        : m_configuration(configuration)
        , m_clock(std::move(clock))
        , m_queue(queue)
        , m_sink(std::move(sink))
        , m_pool(PixelFormat::bgra, configuration.crop.width, configuration.crop.height, poolLimit) {
        if (!screen)
            return;
        m_displayWidth = int(std::lround(screen->frame.width() * screen->backingScaleFactor));
        m_displayHeight = int(std::lround(screen->frame.height() * screen->backingScaleFactor));
    }

    Executor& queue() const { return m_queue; }

    void begin(std::shared_ptr<ScreenCastSession> session) {
        m_session = std::move(session);
        QObject::connect(m_session.get(), &ScreenCastSession::closed, m_session.get(), [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->tellEnd("The desktop ended the recording of the screen.");
        });
        const double interval = std::chrono::duration<double>(m_configuration.minimumFrameInterval).count();
        const int rate = interval > 0 ? int(std::lround(1 / interval)) : 60;
        m_stream = std::make_unique<ScreenCastStream>(
            m_session->takeDescriptor(), m_session->node(), rate,
            ScreenCastStream::Events{
                .picture = [this](const ScreenCastPicture& picture) { take(picture); },
                .ended = [this](const char* reason) { tellEnd(std::string("The screen's stream ended: ") + reason); },
                .tick = [this] { hand(); }});
    }
    void end() {
        m_stream.reset();
        m_session.reset();
    }
    /// Any thread: what waits in the queue is not delivered any more.
    void close() { m_isOpen = false; }

private:
    void take(const ScreenCastPicture& picture) {
        PixelBuffer frame = m_pool.take();
        // The newest goes, and the next one comes soon: a receiver that holds so many is far behind.
        if (!frame)
            return;
        copyScreenCastPicture(picture, m_configuration.crop, m_displayWidth > 0 ? m_displayWidth : picture.width,
                              m_displayHeight > 0 ? m_displayHeight : picture.height, frame);
        m_waiting = ScreenFrame{std::move(frame), m_clock->now()};
        hand();
    }

    /// A receiver that is late still gets the last picture of a screen that goes still.
    void hand() {
        if (!m_waiting.pixels)
            return;
        const bool isTaken = m_queue.tryPost([self = shared_from_this(), frame = m_waiting]() mutable {
            if (self->m_isOpen)
                self->m_sink.frame(std::move(frame));
        });
        if (isTaken)
            m_waiting = {};
    }

    /// Any thread.
    void tellEnd(const std::string& words) {
        m_queue.post([self = shared_from_this(), error = portalError(QString::fromStdString(words))] {
            if (self->m_isOpen && !std::exchange(self->m_hasEnded, true) && self->m_sink.stopped)
                self->m_sink.stopped(error);
        });
    }

    const DisplayCaptureConfiguration m_configuration;
    const std::shared_ptr<HostClock> m_clock;
    Executor& m_queue;
    const FrameSink m_sink;
    /// Pixels as the program counts them; 0 when nobody knows.
    int m_displayWidth = 0;
    int m_displayHeight = 0;
    PixelBufferPool m_pool;
    /// Of the stream's thread.
    ScreenFrame m_waiting;
    std::atomic<bool> m_isOpen = true;
    bool m_hasEnded = false;
    std::shared_ptr<ScreenCastSession> m_session;
    /// The first to go: nothing is called after it.
    std::unique_ptr<ScreenCastStream> m_stream;
};

PortalDisplayCapture::PortalDisplayCapture(std::shared_ptr<HostClock> clock, std::shared_ptr<Screens> screens,
                                           Executor& mainQueue)
    : m_clock(std::move(clock)), m_screens(std::move(screens)), m_mainQueue(mainQueue) {}

PortalDisplayCapture::~PortalDisplayCapture() {
    if (!m_run)
        return;
    m_run->close();
    m_run->end();
}

void PortalDisplayCapture::start(DisplayCaptureConfiguration configuration, Executor& queue, FrameSink sink,
                                 Completion<void> done) {
    if (m_run)
        return m_mainQueue.post([done = std::move(done)] {
            done(fail(portalError(QStringLiteral("The display capture is already running."))));
        });
    m_run = std::make_shared<Run>(configuration, findScreen(m_screens->screens(), configuration.displayID), m_clock,
                                  queue, std::move(sink));
    auto opening = ScreenCastSession::open(QDBusConnection::sessionBus(), configuration.showsCursor);
    opening.then([weak = std::weak_ptr<Run>(m_run), &mainQueue = m_mainQueue,
                  done = std::move(done)](Result<std::shared_ptr<ScreenCastSession>> session) {
        const auto run = weak.lock();
        if (run && session)
            run->begin(std::move(*session));
        const Result<void> answer = session ? Result<void>() : Result<void>(fail(session.error()));
        // Never before the call returns.
        mainQueue.post([answer, done] { done(answer); });
    });
}

void PortalDisplayCapture::stop(Completion<void> done) {
    const auto run = std::exchange(m_run, nullptr);
    if (!run) {
        m_mainQueue.post([done = std::move(done)] { done({}); });
        return;
    }
    run->end();
    // By way of the frames' queue, so that no frame comes later.
    run->queue().post([run, &mainQueue = m_mainQueue, done = std::move(done)]() mutable {
        run->close();
        mainQueue.post([done = std::move(done)] { done({}); });
    });
}

} // namespace keldra
