#include "media/ExportSession.h"

#include "base/SerialQueue.h"
#include "media/CompositionReader.h"
#include "media/ExportFile.h"
#include "media/FrameRequest.h"
#include "media/FrameWindow.h"
#include "media/MediaError.h"
#include "media/SoundEncoding.h"

#include <algorithm>
#include <cassert>
#include <future>

namespace keldra {
namespace {

/// How many composed frames lie between reader and encoder: seven, or what half a gigabyte holds of larger ones.
int framesUnderWay(const VideoComposition& video) {
    constexpr std::int64_t budget = std::int64_t(512) << 20;
    const std::int64_t frameBytes = std::int64_t(video.renderWidth) * video.renderHeight * 3 / 2;
    return int(std::clamp<std::int64_t>(budget / std::max<std::int64_t>(frameBytes, 1), 2, 7));
}

/// Where more tracks lie over each other, their pictures are not read ahead but as the compositor comes to them: a
/// stack however deep costs the memory of a few of its pictures.
constexpr std::size_t mostTracksAhead = 4;

bool isSamePictures(const TrackPictures& a, const TrackPictures& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](const auto& one, const auto& other) {
               return one.first == other.first && one.second.data() == other.second.data();
           });
}

bool hasSound(const Composition& composition) {
    return std::any_of(composition.tracks().begin(), composition.tracks().end(), [](const auto& track) {
        return track->kind() == MediaKind::audio && !track->segments().empty();
    });
}

} // namespace

/// One export under way. Two loops, each one piece of work on its own queue, with the compositor and the window
/// between them; the encoder's loop ends the export.
class ExportSession::Run {
public:
    Run(ExportSession& session, std::string path)
        : m_session(session)
        , m_composition(session.m_composition)
        , m_videoComposition(session.m_videoComposition)
        , m_path(std::move(path))
        , m_frameCount(m_videoComposition ? m_videoComposition->frameCount(m_composition->duration()) : 0)
        , m_window(std::make_shared<FrameWindow>(m_videoComposition ? framesUnderWay(*m_videoComposition) : 1))
        , m_encoding("KELDRA.Export.Encoder")
        , m_compositor(m_videoComposition ? m_videoComposition->makeCompositor() : nullptr)
        , m_reading("KELDRA.Export.Reader") {
        MixReader mix(m_composition, session.m_audioMix, {});
        if (mix.hasSound())
            m_sound = std::make_unique<SoundEncoding>(std::move(mix));
    }

    void start(Executor& answer, Completion<void> done) {
        m_reading.post([this] {
            if (Result<void> read = readFrames(); !read)
                stop(std::move(read.error()));
        });
        m_encoding.post([this, &answer, done = std::move(done)]() mutable {
            m_session.m_status = Status::exporting;
            Result<void> result = encodeFrames();
            const bool wasCancelled = !result && result.error() == cancellation();
            m_session.m_status = result ? Status::completed : wasCancelled ? Status::cancelled : Status::failed;
            answer.post([done = std::move(done), result] { done(result); });
        });
    }

    void cancel() { stop(cancellation()); }

private:
    void stop(Error reason) {
        m_window->stop(std::move(reason));
        if (m_sound)
            m_sound->stop();
    }

    static Error cancellation() { return mediaError(MediaError::cancelled, "Export cancelled."); }

    Result<void> readFrames() {
        if (!m_videoComposition)
            return {};
        // What composed frames need beyond those under way: the compositor may keep one or two.
        const auto pool = std::make_shared<PixelBufferPool>(PixelFormat::i420, m_videoComposition->renderWidth,
                                                            m_videoComposition->renderHeight,
                                                            framesUnderWay(*m_videoComposition) + 4);
        CompositionReader reader(m_composition, {PixelFormat::i420, 2});
        std::shared_ptr<const VideoInstruction> lastInstruction;
        TrackPictures lastFrames;
        for (std::int64_t index = 0; index < m_frameCount; ++index) {
            if (!m_window->enter())
                return {};
            const MediaTime time = m_videoComposition->frameDuration * index;
            const auto instruction = m_videoComposition->instructionAt(time);
            if (!instruction)
                return fail(mediaError(MediaError::outsideTheTimeline, "The timeline has a hole."));
            if (instruction->requiredSourceTrackIDs.size() > mostTracksAhead) {
                lastInstruction = nullptr;
                lastFrames.clear();
                TRY(composeDeep(reader, index, instruction, pool));
                continue;
            }
            TRY_LET(TrackPictures frames, reader.framesAt(time, instruction->requiredSourceTrackIDs));
            const bool isRepeat =
                instruction == lastInstruction && !instruction->containsTweening && isSamePictures(frames, lastFrames);
            lastInstruction = instruction;
            lastFrames = frames;
            if (isRepeat) {
                m_window->deliver(index, FrameWindow::Frame(FrameWindow::Repeat()));
                continue;
            }
            m_compositor->startRequest(std::allocate_shared<FrameRequest>(
                Recycling<FrameRequest>(), instruction, time, std::move(frames), pool,
                [window = m_window.get(), index](FrameRequest::Outcome outcome) {
                    window->deliver(index, std::move(outcome));
                },
                m_window));
        }
        return {};
    }

    /// Waits for the frame, so that the reader is used by one thread at a time.
    Result<void> composeDeep(CompositionReader& reader, std::int64_t index,
                             const std::shared_ptr<const VideoInstruction>& instruction,
                             const std::shared_ptr<PixelBufferPool>& pool) {
        const MediaTime time = m_videoComposition->frameDuration * index;
        std::optional<Error> failure;
        const auto read = [&](std::int32_t trackID) {
            Result<PixelBuffer> frame = failure ? PixelBuffer() : reader.frameAt(time, trackID);
            if (!frame)
                failure = std::move(frame.error());
            return frame.value_or(PixelBuffer());
        };
        const auto promise = std::make_shared<std::promise<FrameRequest::Outcome>>();
        m_compositor->startRequest(std::make_shared<FrameRequest>(
            instruction, time, FrameRequest::SourceFrames(read), pool,
            [promise](FrameRequest::Outcome ended) { promise->set_value(std::move(ended)); }));
        FrameRequest::Outcome outcome = promise->get_future().get();
        if (failure)
            return fail(std::move(*failure));
        m_window->deliver(index, std::move(outcome));
        return {};
    }

    Result<void> encodeFrames() {
        if (const auto reason = m_window->stopReason())
            return fail(*reason);
        std::optional<ExportFile::Picture> picture;
        if (m_videoComposition)
            picture = {m_videoComposition->renderWidth, m_videoComposition->renderHeight,
                       m_videoComposition->frameDuration, m_session.m_encoder};
        auto file = ExportFile::create(m_path, picture, m_sound.get());
        if (!file) {
            stop(file.error());
            return fail(std::move(file.error()));
        }
        if (m_sound)
            m_sound->start([this](Error error) { stop(std::move(error)); });
        Result<void> encoded = encodeInto(**file);
        if (!encoded) {
            stop(encoded.error());
            (*file)->remove();
        }
        return encoded;
    }

    Result<void> encodePictures(ExportFile& file) {
        for (std::int64_t index = 0; index < m_frameCount; ++index) {
            const auto frame = m_window->take(index);
            if (!frame)
                break;
            if (const auto* picture = std::get_if<PixelBuffer>(&*frame))
                TRY(file.append(*picture));
            else
                TRY(file.appendAgain());
            m_window->leave();
            m_session.m_progress = float(index + 1) / float(m_frameCount);
        }
        return {};
    }

    Result<void> encodeSoundAlone(ExportFile& file) {
        const double length = m_composition->duration().seconds();
        for (;;) {
            TRY_LET(const MediaTime end, file.appendSound());
            if (!end.isValid())
                return {};
            m_session.m_progress = float(std::clamp(end.seconds() / length, 0.0, 1.0));
        }
    }

    Result<void> encodeInto(ExportFile& file) {
        TRY(m_videoComposition ? encodePictures(file) : encodeSoundAlone(file));
        if (!m_window->stopReason())
            TRY(file.finish());
        // A cancel that comes while the index moves is one too.
        if (const auto reason = m_window->stopReason())
            return fail(*reason);
        m_session.m_progress = 1;
        return {};
    }

    ExportSession& m_session;
    const std::shared_ptr<const Composition> m_composition;
    const std::optional<VideoComposition> m_videoComposition;
    const std::string m_path;
    const std::int64_t m_frameCount;
    const std::shared_ptr<FrameWindow> m_window;
    // Its queue tells the window, and the encoder's queue takes from it.
    std::unique_ptr<SoundEncoding> m_sound;
    // They end from the last to the first: nothing is composed any more once the reader has ended, and the frames of
    // the compositor are all there, or dropped, once it has gone.
    SerialQueue m_encoding;
    std::unique_ptr<FrameCompositor> m_compositor;
    SerialQueue m_reading;
};

ExportSession::ExportSession(std::shared_ptr<const Composition> composition,
                             std::optional<VideoComposition> videoComposition, std::optional<AudioMix> audioMix)
    : m_composition(std::move(composition))
    , m_videoComposition(std::move(videoComposition))
    , m_audioMix(std::move(audioMix)) {}

ExportSession::~ExportSession() {
    cancel();
}

void ExportSession::start(const std::string& path, Executor& answer, Completion<void> done) {
    assert(!m_run);
    const auto refuse = [&](MediaError code, const char* words) {
        m_status = Status::failed;
        answer.post([done, error = mediaError(code, words)] { done(fail(error)); });
    };
    if ((!m_videoComposition && !hasSound(*m_composition)) || m_composition->duration() <= MediaTime::zero())
        return refuse(MediaError::noPicture, "There is no picture and no sound to export.");
    if (m_videoComposition && !findFaults(*m_videoComposition, *m_composition).empty())
        return refuse(MediaError::invalidSettings, "The video timeline cannot be exported.");
    m_status = Status::waiting;
    m_run = std::make_unique<Run>(*this, path);
    m_run->start(answer, std::move(done));
}

void ExportSession::cancel() {
    if (m_run)
        m_run->cancel();
}

} // namespace keldra
