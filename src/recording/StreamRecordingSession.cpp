#include "recording/StreamRecordingSession.h"

#include "base/Log.h"
#include "recording/CaptureGeometry.h"
#include "recording/OverlayMapping.h"
#include "recording/ScreenRecorderError.h"

#include <cassert>
#include <cstring>

namespace keldra {
namespace {

/// What two frames of one moment are set apart by.
constexpr MediaTime minimumFrameStep(1, 600);

/// How old the last frame is, at least, when a bubble over a still screen is drawn again: with every second tick.
constexpr MediaTime bubbleInterval(25, 1000);

/// Pictures that a cropped frame reaching beyond its display may hold on to: the writer's and the one being made.
constexpr int poolLimit = 12;

QRectF regionDisplay(const StreamRecordingSession::Parts& parts) {
    const auto* region = std::get_if<RegionSelection>(&parts.selection);
    const auto screen = region ? findScreen(parts.screens->screens(), region->displayID) : std::nullopt;
    return screen ? screen->frame : QRectF();
}

} // namespace

StreamRecordingSession::StreamRecordingSession(Parts parts)
    : m_parts(std::move(parts))
    , m_displayAtStart(regionDisplay(m_parts))
    , m_pool(PixelFormat::bgra, m_parts.outputWidth, m_parts.outputHeight, poolLimit)
    , m_decorator(m_parts.outputWidth, m_parts.outputHeight) {}

void StreamRecordingSession::addMicrophone(std::unique_ptr<MicrophoneStream> microphone, const QString& deviceID,
                                           Completion<void> done) {
    m_microphone = std::move(microphone);
    const std::weak_ptr<StreamRecordingSession> weak = weak_from_this();
    const auto hear = [weak](const AudioBuffer& sound) {
        if (const auto self = weak.lock())
            self->handleSound(sound);
    };
    m_microphone->start(deviceID, *m_parts.queue, hear,
                        [weak, done = std::move(done)](const Result<AudioFormat>& format) {
                            const auto self = weak.lock();
                            if (self && format) {
                                if (const auto input = self->m_parts.writer->addAudioInput(*format))
                                    self->m_microphoneTrack.emplace(input->get());
                                else
                                    self->m_microphone.reset();
                            }
                            done(format ? Result<void>() : Result<void>(fail(format.error())));
                        });
}

void StreamRecordingSession::addClicks(ClickSoundStyle style) {
    m_clickSoundStyle = style;
    if (const auto input = m_parts.writer->addAudioInput(ClickTrack::format()))
        m_clickTrack.emplace(input->get());
}

void StreamRecordingSession::start(Completion<void> done) {
    const std::weak_ptr<StreamRecordingSession> weak = weak_from_this();
    if (m_parts.overlays.pointerEffects)
        m_parts.overlays.pointerEffects->setOnClickDetected([weak](double hostSeconds) {
            if (const auto self = weak.lock())
                self->m_parts.queue->post([weak, hostSeconds] {
                    const auto session = weak.lock();
                    if (session && session->m_clickTrack && !session->m_hasFinished)
                        session->m_clickTrack->enqueue(hostSeconds);
                });
        });
    m_parts.queue->post([weak, &mainQueue = *m_parts.mainQueue, done = std::move(done)]() mutable {
        if (const auto self = weak.lock())
            self->prepare();
        mainQueue.post([weak, done = std::move(done)]() mutable {
            if (const auto self = weak.lock())
                self->startSource(std::move(done));
            else
                done(fail(makeError(ScreenRecorderError::couldNotPrepareStream)));
        });
    });
}

/// What takes its time, before the first frame can come.
void StreamRecordingSession::prepare() {
    m_parts.writer->prepare();
    if (!m_clickTrack)
        return;
    std::vector<float> waveform = ClickAudioChunkMixer::loadClickWaveform(m_clickSoundStyle);
    for (float& sample : waveform)
        sample *= ClickAudioChunkMixer::volume;
    m_clickTrack->setWaveform(std::move(waveform));
}

void StreamRecordingSession::startSource(Completion<void> done) {
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
    m_parts.source.start(*m_parts.queue, std::move(sink), [weak, done = std::move(done)](const Result<void>& started) {
        if (const auto self = weak.lock(); self && started)
            self->startTicks();
        else if (self)
            // Pictures may have come all the same.
            self->requestFinish(started.error(), self->m_parts.clock->now());
        done(started);
    });
}

void StreamRecordingSession::stop(Completion<void> done) {
    const MediaTime end = m_parts.clock->now();
    m_parts.queue->post([self = shared_from_this(), end] { self->m_soundEnd = end; });
    m_parts.source.stop([self = shared_from_this(), end, done = std::move(done)](const Result<void>& stopped) {
        self->stopMicrophone([self, end, stopped, done](const Result<void>&) {
            self->requestFinish(std::nullopt, end);
            done(stopped);
        });
    });
}

void StreamRecordingSession::stopMicrophone(Completion<void> done) {
    if (!m_microphone || std::exchange(m_isMicrophoneStopped, true))
        done({});
    else
        m_microphone->stop(std::move(done));
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
    PixelBuffer source = croppedFrame(frame.pixels);
    if (!source) {
        ++m_droppedFrameCount;
        return;
    }
    m_latestSourceFrame = std::move(source);
    const FrameOverlays overlays = readOverlays(false);
    const PixelBuffer decorated = m_decorator.decorated(m_latestSourceFrame, overlays);
    if (!append(decorated ? decorated : m_latestSourceFrame, time, decorated && showsBubble(overlays)))
        ++m_droppedFrameCount;
}

bool StreamRecordingSession::append(const PixelBuffer& frame, MediaTime time, bool hasBubble) {
    if (!m_parts.videoInput->append(frame, time)) {
        finishIfWriterFailed();
        return false;
    }
    m_lastOutputVideoPTS = time;
    m_lastAppendedAt = m_parts.clock->now();
    m_lastHadBubble = hasBubble;
    if (++m_writtenFrameCount == 1 && m_parts.onFirstFrame)
        m_parts.mainQueue->post(m_parts.onFirstFrame);
    return true;
}

bool StreamRecordingSession::startWriting(MediaTime time) {
    m_parts.writer->setOnTrouble(*m_parts.queue, [weak = weak_from_this()](MovieWriterTrouble trouble) {
        if (const auto self = weak.lock())
            self->handleTrouble(trouble);
    });
    if (const Result<void> started = m_parts.writer->startWriting(); !started) {
        requestFinish(started.error(), time);
        return false;
    }
    m_parts.writer->startSession(time);
    m_hasStartedWriting = true;
    m_begin = time;
    if (m_clickTrack)
        m_clickTrack->begin(time);
    return true;
}

MediaTime StreamRecordingSession::stamp(MediaTime time) const {
    if (m_lastOutputVideoPTS.isValid() && time <= m_lastOutputVideoPTS)
        return m_lastOutputVideoPTS + minimumFrameStep;
    return time;
}

/// Null when too many pictures are on their way.
PixelBuffer StreamRecordingSession::croppedFrame(const PixelBuffer& picture) {
    PixelRect crop{0, 0, m_parts.outputWidth, m_parts.outputHeight};
    if (const auto* region = std::get_if<RegionSelection>(&m_parts.selection)) {
        const auto found =
            cropForRegion(region->rect, m_displayAtStart, picture.width(), picture.height(), crop.width, crop.height);
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

void StreamRecordingSession::handleSound(const AudioBuffer& sound) {
    assert(m_parts.queue->isCurrent());
    if (!m_hasStartedWriting || m_hasFinished || !m_microphoneTrack)
        return;
    std::int64_t wanted = sound.frameCount();
    if (m_soundEnd)
        wanted =
            std::clamp<std::int64_t>(firstSampleAt(*m_soundEnd - sound.time(), sound.format().sampleRate), 0, wanted);
    if (wanted == 0)
        return;
    if (!m_microphoneTrack->handle(sound.part(0, wanted), m_isMicrophoneEnabled))
        finishIfWriterFailed();
}

FrameOverlays StreamRecordingSession::readOverlays(bool isRedraw) const {
    const OverlaySources& sources = m_parts.overlays;
    FrameOverlays overlays;
    if (sources.pointerEffects)
        overlays.effects = sources.pointerEffects->snapshot();
    if (sources.cameraOverlay && sources.latestCameraFrame)
        overlays.camera = sources.cameraOverlay->snapshot();
    if (overlays.camera.isVisible)
        overlays.cameraPicture = sources.latestCameraFrame();
    const PointerEffectsSnapshot& effects = overlays.effects;
    const bool placesHighlight = effects.showsCursorHighlight && (!isRedraw || m_lastHadBubble);
    // Only when it is needed: the desktop has to be asked.
    if (overlays.cameraPicture || placesHighlight || effects.isClickPressActive || !effects.clickRipples.empty())
        overlays.space = overlaySpaceOf(m_parts.selection, *m_parts.screens, *m_parts.windows, m_displayAtStart,
                                        m_parts.outputWidth, m_parts.outputHeight);
    return overlays;
}

void StreamRecordingSession::startTicks() {
    const OverlaySources& sources = m_parts.overlays;
    if (!m_clickTrack && !sources.pointerEffects && !sources.cameraOverlay)
        return;
    m_parts.queue->post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self || self->m_hasFinished || self->m_ticks)
            return;
        self->m_ticks = self->m_parts.queue->every(tickInterval, [weak] {
            if (const auto session = weak.lock())
                session->tick();
        });
    });
}

void StreamRecordingSession::tick() {
    if (!m_hasStartedWriting || m_hasFinished)
        return;
    const MediaTime now = m_parts.clock->now();
    redraw(now);
    if (m_clickTrack && !m_clickTrack->writeUpTo(now))
        finishIfWriterFailed();
}

void StreamRecordingSession::redraw(MediaTime now) {
    if (!m_latestSourceFrame || !m_parts.videoInput->isReadyForMoreMediaData())
        return;
    const FrameOverlays overlays = readOverlays(true);
    const bool hasBubble = showsBubble(overlays);
    const bool isLastOld = !m_lastAppendedAt.isValid() || now - m_lastAppendedAt >= bubbleInterval;
    const bool isBubbleDue = (hasBubble || m_lastHadBubble) && isLastOld;
    const bool isClickDrawn = overlays.effects.isClickPressActive || !overlays.effects.clickRipples.empty();
    if (!isBubbleDue && !isClickDrawn)
        return;
    PixelBuffer frame = m_decorator.decorated(m_latestSourceFrame, overlays);
    // A bubble that has gone leaves the frame as the screen is.
    if (!frame && isBubbleDue)
        frame = m_latestSourceFrame;
    if (!frame)
        return;
    // Frames of a click over a still screen gather behind the last real one, which the next overtakes.
    const MediaTime next = m_lastOutputVideoPTS.isValid() ? m_lastOutputVideoPTS + minimumFrameStep : MediaTime::zero();
    append(frame, isBubbleDue ? stamp(now) : next, hasBubble);
}

void StreamRecordingSession::finishIfWriterFailed() {
    // Without an error the encoder was only behind, and the frame is lost.
    if (const auto error = m_parts.writer->error())
        requestFinish(error, m_lastOutputVideoPTS);
}

void StreamRecordingSession::handleTrouble(MovieWriterTrouble trouble) {
    assert(m_parts.queue->isCurrent());
    if (m_hasFinished)
        return;
    if (trouble == MovieWriterTrouble::failed) {
        finishIfWriterFailed();
        return;
    }
    m_ending = RecordingEnding::diskNearlyFull;
    finish(std::nullopt, m_parts.clock->now());
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
    m_ticks.cancel();
    m_latestSourceFrame = {};
    if (!error)
        padSound();
    m_parts.videoInput->markAsFinished();
    if (m_microphoneTrack)
        m_microphoneTrack->markAsFinished();
    if (m_clickTrack)
        m_clickTrack->markAsFinished();
    if (error || !m_hasStartedWriting) {
        giveUp(error.value_or(makeError(ScreenRecorderError::couldNotPrepareStream)));
        return;
    }
    m_parts.writer->finishWriting(end, *m_parts.queue, [self = shared_from_this()](Result<void> result) {
        if (result)
            self->complete(self->m_ending);
        else
            self->giveUp(std::move(result.error()));
    });
}

/// The file leaves its folder before anybody hears of the failure.
void StreamRecordingSession::giveUp(Error error) {
    m_parts.writer->giveUp(m_parts.recoveryDirectory, *m_parts.queue,
                           [self = shared_from_this(), error = std::move(error)](const std::string& keptAt) mutable {
                               if (!keptAt.empty())
                                   error.info["kept"] = keptAt;
                               self->complete(fail(std::move(error)));
                           });
}

/// Up to the last picture, where sound ends before. What the writer refuses now is its error at the finish.
void StreamRecordingSession::padSound() {
    if (m_clickTrack)
        (void)m_clickTrack->writeUpTo(m_lastOutputVideoPTS);
    if (m_microphoneTrack)
        (void)m_microphoneTrack->finish(m_lastOutputVideoPTS);
}

void StreamRecordingSession::complete(Result<RecordingEnding> result) {
    // What was lost is told once, and of a take, not of a file that never came to be.
    if (m_begin.isNumeric())
        logLine("[KELDRA]", "recording ended: " + std::to_string(m_writtenFrameCount) + " frames written, " +
                                std::to_string(m_droppedFrameCount) +
                                " dropped; it began at t=" + std::to_string(m_begin.seconds()));
    // After a failure the source still runs. Whoever hears of the end may take the queue away, so nothing may come
    // later.
    m_parts.mainQueue->post([self = shared_from_this(), result = std::move(result)] {
        self->m_parts.source.stop([self, result](const Result<void>&) {
            self->stopMicrophone([self, result](const Result<void>&) { self->m_parts.onFinish(result); });
        });
    });
}

} // namespace keldra
