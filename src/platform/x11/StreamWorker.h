#pragma once

#include "base/HostClock.h"
#include "platform/ScreenStream.h"
#include "platform/x11/CapturePacer.h"
#include "platform/x11/CursorWatch.h"
#include "platform/x11/FramePool.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/ScaledPaint.h"
#include "platform/x11/SourcePicture.h"
#include "platform/x11/WakeUp.h"
#include "platform/x11/X11Monitors.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace keldra {

/// One running stream: its thread, its connection and what it paints. Made and destroyed on main; the destructor ends
/// the thread.
class StreamWorker {
public:
    StreamWorker(StreamConfiguration configuration, std::shared_ptr<HostClock> clock,
                 std::shared_ptr<MonitorNumbers> numbers, Executor& mainQueue, Executor& queue, FrameSink sink,
                 Completion<void> started);
    ~StreamWorker();
    StreamWorker(const StreamWorker&) = delete;
    StreamWorker& operator=(const StreamWorker&) = delete;

    /// Ends the stream; `done` runs on main, after all frames.
    void stop(Completion<void> done);
    bool hasEnded() const;

private:
    /// What frames that still wait in the queue share with us.
    struct Outlet {
        FrameSink sink;
        std::atomic<bool> isOpen = true;
    };

    void run(const Completion<void>& started);
    Result<void> open();
    Result<void> loop();
    void wait();
    /// Answers whether there were any.
    bool readEvents();
    void pollPointer();
    void recheck();
    Result<void> capture();
    Result<std::optional<MediaTime>> paint(const PooledFrame& frame);
    void drawPointer(PixelBuffer& pixels);
    void deliver(ScreenFrame frame);
    void end(const Result<void>& outcome);
    void answer(Completion<void> done);
    /// Where the pointer shows in the source, if it does.
    std::optional<QPoint> pointerInside() const;

    const StreamConfiguration m_configuration;
    const std::shared_ptr<HostClock> m_clock;
    const std::shared_ptr<MonitorNumbers> m_numbers;
    Executor& m_mainQueue;
    Executor& m_queue;
    const std::shared_ptr<Outlet> m_outlet;
    const std::shared_ptr<WakeUp> m_wakeUp;
    std::atomic<bool> m_isStopping = false;

    mutable std::mutex m_lock;
    std::vector<Completion<void>> m_stopped;
    bool m_hasEnded = false;

    // The thread's own, in the order of their dependence.
    std::shared_ptr<X11Connection> m_connection;
    std::unique_ptr<RenderFormats> m_formats;
    std::unique_ptr<FramePool> m_pool;
    std::unique_ptr<CursorWatch> m_pointer;
    std::unique_ptr<SourcePicture> m_picture;
    std::unique_ptr<ScaledPaint> m_scaled;
    CapturePacer m_pacer;
    CapturePacer::TimePoint m_nextPoll;
    CapturePacer::TimePoint m_nextRecheck;
    std::optional<QPoint> m_drawnPointer;
    MediaTime m_lastStamp;

    std::thread m_thread;
};

} // namespace keldra
