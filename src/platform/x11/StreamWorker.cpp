#include "platform/x11/StreamWorker.h"

#include "base/Overloaded.h"
#include "platform/x11/DisplayPicture.h"
#include "platform/x11/WindowPicture.h"
#include "platform/x11/X11Error.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <pthread.h>

namespace keldra {
namespace {

using Clock = std::chrono::steady_clock;

/// A picture that our own windows keep slipping into is given up after so many tries.
constexpr int maximumTries = 4;

constexpr Duration shortestInterval = std::chrono::milliseconds(1);
constexpr std::chrono::seconds recheckInterval{1};

} // namespace

StreamWorker::StreamWorker(StreamConfiguration configuration, std::shared_ptr<HostClock> clock,
                           std::shared_ptr<MonitorNumbers> numbers, Executor& mainQueue, Executor& queue,
                           FrameSink sink, Completion<void> started)
    : m_configuration(std::move(configuration))
    , m_clock(std::move(clock))
    , m_numbers(std::move(numbers))
    , m_mainQueue(mainQueue)
    , m_queue(queue)
    , m_outlet(std::make_shared<Outlet>())
    , m_wakeUp(std::make_shared<WakeUp>())
    , m_pacer(std::max(m_configuration.minimumFrameInterval, shortestInterval)) {
    m_outlet->sink = std::move(sink);
    m_thread = std::thread([this, started = std::move(started)] {
        pthread_setname_np(pthread_self(), "screen stream");
        run(started);
    });
}

StreamWorker::~StreamWorker() {
    m_outlet->isOpen = false;
    m_isStopping = true;
    m_wakeUp->wake();
    m_thread.join();
}

void StreamWorker::stop(Completion<void> done) {
    {
        const std::lock_guard guard(m_lock);
        if (!m_hasEnded) {
            m_stopped.push_back(std::move(done));
            m_isStopping = true;
            m_wakeUp->wake();
            return;
        }
    }
    answer(std::move(done));
}

bool StreamWorker::hasEnded() const {
    const std::lock_guard guard(m_lock);
    return m_hasEnded;
}

/// By way of the frames' queue, so that no frame comes later; posted from main, because whoever hears of the end may
/// take the queue away, and our thread must not be busy with it then.
void StreamWorker::answer(Completion<void> done) {
    m_mainQueue.post([&mainQueue = m_mainQueue, &queue = m_queue, done = std::move(done)]() mutable {
        queue.post(
            [&mainQueue, done = std::move(done)]() mutable { mainQueue.post([done = std::move(done)] { done({}); }); });
    });
}

void StreamWorker::run(const Completion<void>& started) {
    const Result<void> opened = open();
    m_mainQueue.post([started, opened] { started(opened); });
    end(opened ? loop() : Result<void>());
}

void StreamWorker::end(const Result<void>& outcome) {
    m_scaled.reset();
    m_picture.reset();
    m_pointer.reset();
    m_pool.reset();
    m_connection.reset();
    if (!outcome)
        m_queue.post([outlet = m_outlet, error = outcome.error()] {
            if (outlet->isOpen && outlet->sink.stopped)
                outlet->sink.stopped(error);
        });
    std::vector<Completion<void>> stopped;
    {
        const std::lock_guard guard(m_lock);
        m_hasEnded = true;
        stopped.swap(m_stopped);
    }
    for (Completion<void>& done : stopped)
        answer(std::move(done));
}

Result<void> StreamWorker::open() {
    TRY_LET(m_connection, X11Connection::open());
    const X11Connection& x = *m_connection;
    TRY(x.requireStreaming());
    m_formats = std::make_unique<RenderFormats>(x);
    m_pointer = std::make_unique<CursorWatch>(x);
    m_picture = std::visit(Overloaded{[&](const DisplaySource& display) -> std::unique_ptr<SourcePicture> {
                                          return std::make_unique<DisplayPicture>(x, *m_formats, *m_numbers, display);
                                      },
                                      [&](const WindowSource& window) -> std::unique_ptr<SourcePicture> {
                                          return std::make_unique<WindowPicture>(x, *m_formats, window.windowID);
                                      }},
                           m_configuration.source);
    TRY(m_picture->update());
    TRY_LET(m_pool, FramePool::make(m_connection, m_formats->argb32(), m_configuration.width, m_configuration.height,
                                    m_configuration.queueDepth, m_wakeUp));
    return {};
}

Result<void> StreamWorker::loop() {
    m_nextPoll = Clock::now();
    m_nextRecheck = Clock::now() + recheckInterval;
    m_pacer.changed(std::max(Clock::now(), m_picture->readyAt().value_or(Clock::now())));
    while (!m_isStopping) {
        readEvents();
        pollPointer();
        recheck();
        if (m_connection->isBroken())
            return fail(x11Error(X11ErrorCode::connectionLost, "The X display went away."));
        if (m_pacer.isPending() && *m_pacer.due() <= Clock::now() && m_pool->hasFree())
            TRY(capture());
        else
            wait();
    }
    return {};
}

/// Until something happens, the pointer is looked at again, or a picture is due.
void StreamWorker::wait() {
    // Waiting for replies, and even sending, may have brought events that the socket will not announce again.
    xcb_flush(m_connection->raw());
    if (readEvents())
        return;
    Clock::time_point deadline = m_nextRecheck;
    if (m_configuration.showsCursor)
        deadline = std::min(deadline, m_nextPoll);
    if (m_pacer.isPending() && m_pool->hasFree())
        deadline = std::min(deadline, *m_pacer.due());
    const Duration left = std::max<Duration>(deadline - Clock::now(), Duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeout{std::time_t(seconds.count()), long((left - seconds).count())};
    std::array<pollfd, 2> sources{
        {{xcb_get_file_descriptor(m_connection->raw()), POLLIN, 0}, {m_wakeUp->descriptor(), POLLIN, 0}}};
    ppoll(sources.data(), sources.size(), &timeout, nullptr);
    if (sources[1].revents != 0)
        m_wakeUp->clear();
}

bool StreamWorker::readEvents() {
    bool isAny = false;
    while (const XcbPtr<xcb_generic_event_t> event{xcb_poll_for_event(m_connection->raw())}) {
        isAny = true;
        // Errors of requests that nobody waited for: a window went while we asked about it.
        if (event->response_type == 0)
            continue;
        const bool isNewShape = m_pointer->handle(*event) && m_configuration.showsCursor && m_drawnPointer;
        if (m_picture->handle(*event) || isNewShape)
            m_pacer.changed(Clock::now());
    }
    return isAny;
}

std::optional<QPoint> StreamWorker::pointerInside() const {
    const std::optional<QPoint> position = m_pointer->position();
    const PixelRect area = m_picture->area();
    if (!position || !QRect(area.x, area.y, area.width, area.height).contains(*position))
        return std::nullopt;
    return *position - QPoint(area.x, area.y);
}

void StreamWorker::pollPointer() {
    const auto now = Clock::now();
    if (!m_configuration.showsCursor || now < m_nextPoll)
        return;
    const Duration interval = std::max(m_configuration.minimumFrameInterval, shortestInterval);
    m_nextPoll += (now - m_nextPoll) / interval * interval + interval;
    if (pointerInside() != m_drawnPointer)
        m_pacer.changed(now);
}

void StreamWorker::recheck() {
    const auto now = Clock::now();
    if (now < m_nextRecheck)
        return;
    m_nextRecheck = now + recheckInterval;
    if (m_picture->recheck())
        m_pacer.changed(now);
}

Result<void> StreamWorker::capture() {
    m_pacer.taken(Clock::now());
    TRY(m_picture->update());
    if (m_picture->area().isEmpty())
        return {};
    PooledFrame frame = m_pool->take();
    for (int i = 0; i < maximumTries; ++i) {
        TRY_LET(const std::optional<MediaTime> stamp, paint(frame));
        if (!stamp)
            continue;
        if (m_configuration.showsCursor)
            drawPointer(frame.pixels);
        m_lastStamp = m_lastStamp.isNumeric() ? std::max(m_lastStamp, *stamp) : *stamp;
        deliver({std::move(frame.pixels), m_lastStamp});
        return {};
    }
    m_pacer.changed(Clock::now());
    return {};
}

/// When the picture was taken; nothing when it must not be used.
Result<std::optional<MediaTime>> StreamWorker::paint(const PooledFrame& frame) {
    TRY(m_picture->update());
    const PixelRect area = m_picture->area();
    if (area.isEmpty())
        return std::nullopt;
    const FrameFit fit = fitInto(area.width, area.height, m_configuration.width, m_configuration.height);
    if (fit.isPlain) {
        m_picture->paint(frame.picture);
    } else {
        if (!m_scaled || !m_scaled->hasSize(area.width, area.height))
            m_scaled = std::make_unique<ScaledPaint>(*m_connection, m_formats->argb32(), area.width, area.height);
        m_picture->paint(m_scaled->picture());
        m_scaled->paint(frame.picture, m_configuration.width, m_configuration.height, fit);
    }
    TRY(m_pool->finish(frame));
    const MediaTime stamp = m_clock->now();
    readEvents();
    return m_picture->isSpoiled() ? std::nullopt : std::optional(stamp);
}

void StreamWorker::drawPointer(PixelBuffer& pixels) {
    m_drawnPointer = pointerInside();
    if (!m_drawnPointer)
        return;
    const PixelRect area = m_picture->area();
    const FrameFit fit = fitInto(area.width, area.height, m_configuration.width, m_configuration.height);
    const double scale = fit.isPlain ? 1 : double(fit.target.width) / area.width;
    drawCursor(pixels, m_pointer->image(), fit.target.x + int(m_drawnPointer->x() * scale),
               fit.target.y + int(m_drawnPointer->y() * scale));
}

void StreamWorker::deliver(ScreenFrame frame) {
    const bool isTaken = m_queue.tryPost([outlet = m_outlet, frame = std::move(frame)]() mutable {
        if (outlet->isOpen)
            outlet->sink.frame(std::move(frame));
    });
    // A receiver that is late still gets the last picture of a screen that goes still.
    if (!isTaken)
        m_pacer.changed(Clock::now());
}

} // namespace keldra
