#include "recording/StreamRecordingSession.h"

#include "recording/CaptureGeometry.h"
#include "recording/ScreenRecorderError.h"

#include <cassert>
#include <cstring>

namespace keldra {
namespace {

/// What two frames of one moment are set apart by.
constexpr MediaTime minimumFrameStep(1, 600);

/// Pictures that a cropped frame reaching beyond its display may hold on to: the writer's and the one being made.
constexpr int poolLimit = 12;

} // namespace

StreamRecordingSession::StreamRecordingSession(Parts parts)
    : m_parts(std::move(parts)), m_pool(PixelFormat::bgra, m_parts.outputWidth, m_parts.outputHeight, poolLimit) {}

void StreamRecordingSession::start(Completion<void> done) {
    const std::weak_ptr<StreamRecordingSession> weak = weak_from_this();
    FrameSink sink;
    sink.frame = [weak](ScreenFrame frame) {
        if (const auto self = weak.lock())
            self->handleFrame(std::move(frame));
    };
    sink.stopped = [weak](const Error& error) {
        if (const auto self = weak.lock())
            self->requestFinish(error, self->m_parts.clock->now());
    };
    m_parts.stream->start(m_parts.configuration, *m_parts.queue, std::move(sink), std::move(done));
}

void StreamRecordingSession::stop(Completion<void> done) {
    const MediaTime end = m_parts.clock->now();
    m_parts.stream->stop([self = shared_from_this(), end, done = std::move(done)](const Result<void>& stopped) {
        self->requestFinish(std::nullopt, end);
        done(stopped);
    });
}

void StreamRecordingSession::handleFrame(ScreenFrame frame) {
    assert(m_parts.queue->isCurrent());
    if (m_hasFinished)
        return;
    if (!m_hasStartedWriting && !startWriting(frame.time))
        return;
    if (!m_parts.videoInput->isReadyForMoreMediaData()) {
        ++m_droppedFrameCount;
        finishIfWriterFailed();
        return;
    }
    if (!frame.pixels)
        return;

    const MediaTime time = stamp(frame.time);
    if (!m_parts.videoInput->append(croppedFrame(frame.pixels), time)) {
        ++m_droppedFrameCount;
        finishIfWriterFailed();
        return;
    }
    m_lastOutputVideoPTS = time;
    if (++m_writtenFrameCount == 1 && m_parts.onFirstFrame)
        m_parts.mainQueue->post(m_parts.onFirstFrame);
}

bool StreamRecordingSession::startWriting(MediaTime time) {
    if (const Result<void> started = m_parts.writer->startWriting(); !started) {
        requestFinish(started.error(), time);
        return false;
    }
    m_parts.writer->startSession(time);
    m_hasStartedWriting = true;
    return true;
}

MediaTime StreamRecordingSession::stamp(MediaTime time) const {
    if (m_lastOutputVideoPTS.isValid() && time <= m_lastOutputVideoPTS)
        return m_lastOutputVideoPTS + minimumFrameStep;
    return time;
}

PixelBuffer StreamRecordingSession::croppedFrame(const PixelBuffer& picture) {
    PixelRect crop{0, 0, m_parts.outputWidth, m_parts.outputHeight};
    if (const auto* region = std::get_if<RegionSelection>(&m_parts.selection)) {
        const auto screen = findScreen(m_parts.screens->screens(), region->displayID);
        const auto found = cropForRegion(region->rect, screen ? screen->frame : QRectF(), picture.width(),
                                         picture.height(), crop.width, crop.height);
        crop = found.value_or(crop);
    }
    return fittedToOutput(picture, crop);
}

PixelBuffer StreamRecordingSession::fittedToOutput(const PixelBuffer& picture, PixelRect crop) {
    const PixelRect inside = crop.intersection({0, 0, picture.width(), picture.height()});
    // The usual case shares the stream's own pixels.
    if (inside == crop)
        return picture.cropped(crop);

    PixelBuffer frame = m_pool.take();
    if (!frame)
        return {};
    for (int y = 0; y < crop.height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(frame.mutableRow(0, y));
        std::fill_n(row, crop.width, 0xff000000U);
        const int sourceY = crop.y + y;
        if (sourceY >= inside.y && sourceY < inside.bottom() && inside.width > 0)
            std::memcpy(row + (inside.x - crop.x), picture.row(0, sourceY) + inside.x * 4,
                        std::size_t(inside.width) * 4);
    }
    return frame;
}

void StreamRecordingSession::finishIfWriterFailed() {
    // Without an error the encoder was only behind, and the frame is lost.
    if (const auto error = m_parts.writer->error())
        requestFinish(error, m_lastOutputVideoPTS);
}

void StreamRecordingSession::requestFinish(std::optional<Error> error, MediaTime end) {
    m_parts.queue->post([weak = weak_from_this(), error = std::move(error), end] {
        if (const auto self = weak.lock())
            self->finish(error, end);
    });
}

void StreamRecordingSession::finish(const std::optional<Error>& error, MediaTime end) {
    if (m_hasFinished)
        return;
    m_hasFinished = true;
    m_parts.videoInput->markAsFinished();
    if (error || !m_hasStartedWriting) {
        m_parts.writer->cancelWriting();
        complete(fail(error.value_or(makeError(ScreenRecorderError::couldNotPrepareStream))));
        return;
    }
    m_parts.writer->finishWriting(end, *m_parts.queue, [self = shared_from_this()](Result<void> result) {
        if (!result)
            self->m_parts.writer->cancelWriting();
        self->complete(std::move(result));
    });
}

void StreamRecordingSession::complete(Result<void> result) {
    m_parts.mainQueue->post(
        [self = shared_from_this(), result = std::move(result)] { self->m_parts.onFinish(result); });
}

} // namespace keldra
