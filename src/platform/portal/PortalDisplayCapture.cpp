#include "platform/portal/PortalDisplayCapture.h"

#include "imaging/PixelBufferPool.h"
#include "platform/portal/PortalRequest.h"
#include "platform/portal/ScreenCastFrame.h"
#include "platform/portal/ScreenCastSession.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <optional>

namespace keldra {
namespace {

/// Pictures that may be out: those in the recorder, the one that waits, and the one that is made.
constexpr int poolLimit = 8;

/// As encoders take it: an odd row or column is left out.
int evenPart(int side) {
    return std::max(side & ~1, 2);
}

} // namespace

/// One capture from the user's leave to the stop. Made and ended on main; pictures come on PipeWire's thread.
class PortalDisplayCapture::Run : public std::enable_shared_from_this<Run> {
public:
    struct Receiver {
        Receiver(Executor& frames, FrameSink told, MediaTime begin)
            : queue(frames), sink(std::move(told)), since(begin) {}

        Executor& queue;
        const FrameSink sink;
        const MediaTime since;
        /// What waits in the queue is not delivered any more.
        std::atomic<bool> isOpen = true;
        /// Of the queue.
        bool hasEnded = false;
    };

    Run(std::shared_ptr<HostClock> clock, Executor& mainQueue, Completion<PixelRect> ready)
        : m_clock(std::move(clock)), m_mainQueue(mainQueue), m_ready(std::move(ready)) {}

    void begin(std::shared_ptr<ScreenCastSession> session, Duration minimumFrameInterval) {
        m_session = std::move(session);
        QObject::connect(m_session.get(), &ScreenCastSession::closed, m_session.get(), [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->tellEnd("The desktop ended the recording of the screen.");
        });
        const double interval = std::chrono::duration<double>(minimumFrameInterval).count();
        const int rate = interval > 0 ? int(std::lround(1 / interval)) : 60;
        m_stream = std::make_unique<ScreenCastStream>(
            m_session->takeDescriptor(), m_session->node(), rate,
            ScreenCastStream::Events{
                .picture = [this](const ScreenCastPicture& picture) { take(picture); },
                .ended = [this](const char* reason) { tellEnd(std::string("The screen's stream ended: ") + reason); },
                .tick = [this] { hand(); }});
    }
    /// From now on pictures go there, first of all the one that there is. An end that came before is told now.
    void deliverTo(Executor& queue, FrameSink sink) {
        std::optional<Error> ended;
        {
            const std::lock_guard lock(m_mutex);
            m_receiver = std::make_shared<Receiver>(queue, std::move(sink), m_clock->now());
            ended = std::exchange(m_ended, std::nullopt);
        }
        if (ended)
            tell(receiver(), *ended);
    }
    void end() {
        m_stream.reset();
        m_session.reset();
    }
    std::shared_ptr<Receiver> receiver() {
        const std::lock_guard lock(m_mutex);
        return m_receiver;
    }

private:
    void take(const ScreenCastPicture& picture) {
        if (!m_pool) {
            m_pool.emplace(PixelFormat::bgra, evenPart(picture.width), evenPart(picture.height), poolLimit);
            answer(PixelRect{0, 0, m_pool->width(), m_pool->height()});
        }
        PixelBuffer frame = m_pool->take();
        // The newest goes, and the next one comes soon: a receiver that holds so many is far behind.
        if (!frame)
            return;
        copyScreenCastPicture(picture, frame);
        m_waiting = ScreenFrame{std::move(frame), m_clock->now()};
        hand();
    }

    /// A receiver that is late still gets the last picture of a screen that goes still.
    void hand() {
        const auto receiver = this->receiver();
        if (!m_waiting.pixels || !receiver)
            return;
        // The first one shows what was there when somebody began to look.
        m_waiting.time = std::max(m_waiting.time, receiver->since);
        const bool isTaken = receiver->queue.tryPost([receiver, frame = m_waiting]() mutable {
            if (receiver->isOpen)
                receiver->sink.frame(std::move(frame));
        });
        if (isTaken)
            m_waiting = {};
    }

    /// Any thread.
    void tellEnd(const std::string& words) {
        const Error error = portalError(QString::fromStdString(words));
        answer(fail(error));
        std::shared_ptr<Receiver> receiver;
        {
            const std::lock_guard lock(m_mutex);
            receiver = m_receiver;
            if (!receiver && !m_ended)
                m_ended = error;
        }
        if (receiver)
            tell(receiver, error);
    }
    static void tell(const std::shared_ptr<Receiver>& receiver, const Error& error) {
        receiver->queue.post([receiver, error] {
            if (receiver->isOpen && !std::exchange(receiver->hasEnded, true) && receiver->sink.stopped)
                receiver->sink.stopped(error);
        });
    }

    /// Any thread; the first answer counts.
    void answer(Result<PixelRect> size) {
        m_mainQueue.post([weak = weak_from_this(), size = std::move(size)] {
            const auto self = weak.lock();
            if (const auto ready = self ? std::exchange(self->m_ready, nullptr) : nullptr)
                ready(size);
        });
    }

    const std::shared_ptr<HostClock> m_clock;
    Executor& m_mainQueue;
    /// Of main; empty when it was told.
    Completion<PixelRect> m_ready;
    std::mutex m_mutex;
    std::shared_ptr<Receiver> m_receiver;
    std::optional<Error> m_ended;
    /// These two are of the stream's thread.
    std::optional<PixelBufferPool> m_pool;
    ScreenFrame m_waiting;
    std::shared_ptr<ScreenCastSession> m_session;
    /// The first to go: nothing is called after it.
    std::unique_ptr<ScreenCastStream> m_stream;
};

void PortalDisplayCapture::pick(std::shared_ptr<HostClock> clock, Executor& mainQueue,
                                std::shared_ptr<QString> restoreToken, DisplayCaptureConfiguration configuration,
                                Completion<PickedDisplay> done) {
    auto opening =
        ScreenCastSession::open(QDBusConnection::sessionBus(), configuration.showsCursor, std::move(restoreToken));
    opening.then([clock = std::move(clock), &mainQueue, interval = configuration.minimumFrameInterval,
                  done = std::move(done)](Result<std::shared_ptr<ScreenCastSession>> session) {
        // Never before the call returns.
        if (!session)
            return mainQueue.post([done, error = session.error()] { done(fail(error)); });
        // Held by its own answer, which comes in any case.
        const auto held = std::make_shared<std::shared_ptr<Run>>();
        *held = std::make_shared<Run>(clock, mainQueue, [held, &mainQueue, done](const Result<PixelRect>& whole) {
            const std::shared_ptr<Run> run = std::exchange(*held, nullptr);
            if (whole)
                return done(PickedDisplay{
                    std::shared_ptr<PortalDisplayCapture>(new PortalDisplayCapture(run, mainQueue)), *whole});
            run->end();
            done(fail(whole.error()));
        });
        (*held)->begin(std::move(*session), interval);
    });
}

PortalDisplayCapture::PortalDisplayCapture(std::shared_ptr<Run> run, Executor& mainQueue)
    : m_mainQueue(mainQueue), m_run(std::move(run)) {}

PortalDisplayCapture::~PortalDisplayCapture() {
    if (!m_run)
        return;
    if (const auto receiver = m_run->receiver())
        receiver->isOpen = false;
    m_run->end();
}

void PortalDisplayCapture::start(DisplayCaptureConfiguration, Executor& queue, FrameSink sink, Completion<void> done) {
    const bool canStart = m_run && !m_run->receiver();
    if (canStart)
        m_run->deliverTo(queue, std::move(sink));
    m_mainQueue.post([canStart, done = std::move(done)] {
        if (canStart)
            done({});
        else
            done(fail(portalError(QStringLiteral("The display capture is already running, or over."))));
    });
}

void PortalDisplayCapture::stop(Completion<void> done) {
    const auto run = std::exchange(m_run, nullptr);
    const auto receiver = run ? run->receiver() : nullptr;
    if (run)
        run->end();
    if (!receiver) {
        m_mainQueue.post([done = std::move(done)] { done({}); });
        return;
    }
    // By way of the frames' queue, so that no frame comes later.
    receiver->queue.post([receiver, &mainQueue = m_mainQueue, done = std::move(done)]() mutable {
        receiver->isOpen = false;
        mainQueue.post([done = std::move(done)] { done({}); });
    });
}

} // namespace keldra
