#include "media/PlayerFrames.h"

#include "media/FrameRequest.h"
#include "media/MediaError.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Frames that are made ahead: an eighth of a second at 60 a second, for cuts that need a seek.
constexpr int mostAhead = 8;
/// A frame that is late by more than so many is not made; nor are the next ones, which would be late by the time they
/// are there.
constexpr int tolerableDelay = 2;
constexpr int skippedWhenLate = 2;
/// Times come rounded to the nearest 1/600 s, which may lie just before the frame that is meant.
constexpr double frameTolerance = 1.0 / 1200;

const TrackReader::Options readerOptions{PixelFormat::i420, 2};

} // namespace

PlayerFrames::PlayerFrames(std::shared_ptr<const Composition> composition, VideoComposition videoComposition,
                           std::shared_ptr<PictureCache> cache, Events events)
    : m_composition(std::move(composition))
    , m_cache(std::move(cache))
    , m_events(std::move(events))
    , m_look(makeLook(std::move(videoComposition)))
    , m_reader(m_composition, readerOptions, m_cache)
    , m_compositor(m_look->video.makeCompositor())
    , m_queue("KELDRA.Player.Pictures") {}

PlayerFrames::~PlayerFrames() {
    {
        const std::lock_guard guard(m_lock);
        m_isStopping = true;
    }
    // Reading ends first, then composing, which may still wake the queue up; the queue goes last.
    m_queue.sync([] {});
    m_compositor.reset();
}

std::shared_ptr<const PlayerFrames::Look> PlayerFrames::makeLook(VideoComposition video) const {
    // Besides those ahead: the one on screen, the one taken next, one in work.
    auto pool =
        std::make_shared<PixelBufferPool>(PixelFormat::i420, video.renderWidth, video.renderHeight, mostAhead + 4);
    return std::make_shared<const Look>(Look{std::move(video), std::move(pool)});
}

void PlayerFrames::aim(std::int64_t index, int direction) {
    {
        const std::lock_guard guard(m_lock);
        ++m_aimNumber;
        m_direction = direction;
        m_firstAimed = index;
        m_next = index;
        m_lastMade.reset();
        m_ready.clear();
        m_underWay = 0;
    }
    wakeUp();
}

void PlayerFrames::setStep(int step) {
    const std::lock_guard guard(m_lock);
    m_step = step;
}

void PlayerFrames::setVideoComposition(VideoComposition videoComposition) {
    auto look = makeLook(std::move(videoComposition));
    const std::lock_guard guard(m_lock);
    m_look = std::move(look);
}

bool PlayerFrames::hasMade(std::int64_t index) const {
    const std::lock_guard guard(m_lock);
    if (!m_lastMade)
        return false;
    const auto [low, high] = std::minmax(m_firstAimed, *m_lastMade);
    return low <= index && index <= high;
}

bool PlayerFrames::isReadyFrom(std::int64_t index) const {
    if (!hasMade(index))
        return false;
    const std::lock_guard guard(m_lock);
    return m_direction >= 0 || !m_next || int(m_ready.size()) == mostAhead;
}

PixelBuffer PlayerFrames::take(std::int64_t due) {
    PixelBuffer taken;
    {
        const std::lock_guard guard(m_lock);
        const int sign = m_direction < 0 ? -1 : 1;
        for (; !m_ready.empty() && (due - m_ready.front().index) * sign >= 0; m_ready.pop_front()) {
            m_droppedCount += taken ? 1 : 0;
            taken = std::move(m_ready.front().picture);
        }
        if (m_direction != 0 && m_next && (due - *m_next) * sign > tolerableDelay * m_step) {
            const std::int64_t next = due + sign * skippedWhenLate * m_step;
            m_droppedCount += std::abs(next - *m_next) / m_step;
            m_next = next;
        }
    }
    wakeUp();
    return taken;
}

std::int64_t PlayerFrames::droppedCount() const {
    const std::lock_guard guard(m_lock);
    return m_droppedCount;
}

std::int64_t PlayerFrames::indexAt(double seconds) const {
    const std::lock_guard guard(m_lock);
    return std::int64_t(std::floor((seconds + frameTolerance) / m_look->video.frameDuration.seconds()));
}

double PlayerFrames::framesPerSecond() const {
    const std::lock_guard guard(m_lock);
    return 1 / m_look->video.frameDuration.seconds();
}

std::int64_t PlayerFrames::frameCount() const {
    const std::lock_guard guard(m_lock);
    return m_look->video.frameCount(m_composition->duration());
}

void PlayerFrames::wakeUp() {
    {
        const std::lock_guard guard(m_lock);
        if (m_isAwake || m_isStopping)
            return;
        m_isAwake = true;
    }
    m_queue.post([this] { work(); });
}

bool PlayerFrames::isAimed(std::uint64_t aimNumber) const {
    const std::lock_guard guard(m_lock);
    return m_aimNumber == aimNumber && !m_isStopping;
}

std::optional<PlayerFrames::Order> PlayerFrames::nextOrder() {
    const std::int64_t count = frameCount();
    const std::lock_guard guard(m_lock);
    const bool hasRoom = int(m_ready.size()) + m_underWay < mostAhead;
    if (m_isStopping || !m_next || !hasRoom)
        return std::nullopt;
    if (*m_next < 0 || *m_next >= count) {
        m_next.reset();
        return std::nullopt;
    }
    Order order{*m_next, m_aimNumber, m_direction, m_look};
    m_next = m_direction == 0 ? std::nullopt : std::optional(*m_next + m_direction * m_step);
    ++m_underWay;
    return order;
}

void PlayerFrames::work() {
    {
        const std::lock_guard guard(m_lock);
        m_isAwake = false;
    }
    while (const auto order = nextOrder())
        if (Result<void> made = make(*order); !made)
            return report(order->aimNumber, std::move(made.error()));

    // Nothing is wanted right now: decodes ahead of what reverse play will want, a picture at a time.
    std::unique_lock lock(m_lock);
    if (m_direction >= 0 || !m_next || m_isStopping)
        return;
    const std::int64_t next = *m_next;
    const std::uint64_t aimNumber = m_aimNumber;
    const auto look = m_look;
    lock.unlock();
    const MediaTime time = look->video.frameDuration * next;
    const auto instruction = look->video.instructionAt(time);
    const auto hasMore = instruction
                             ? readBackwards(time, instruction->requiredSourceTrackIDs, BackwardReader::Want::ahead)
                             : Result<bool>(false);
    if (!hasMore)
        return report(aimNumber, hasMore.error());
    if (*hasMore)
        wakeUp();
}

Result<void> PlayerFrames::make(const Order& order) {
    const MediaTime time = order.look->video.frameDuration * order.index;
    const auto instruction = order.look->video.instructionAt(time);
    if (!instruction)
        return fail(mediaError(MediaError::outsideTheTimeline, "The timeline has a hole."));
    const auto& trackIDs = instruction->requiredSourceTrackIDs;
    while (order.direction < 0 && isAimed(order.aimNumber)) {
        TRY_LET(const bool hasMore, readBackwards(time, trackIDs, BackwardReader::Want::picture));
        if (!hasMore)
            break;
    }
    if (!isAimed(order.aimNumber))
        return {};
    TRY_LET(TrackPictures frames, m_reader.framesAt(time, trackIDs));
    m_compositor->startRequest(std::make_shared<FrameRequest>(
        instruction, time, std::move(frames), order.look->pool, [this, order](FrameRequest::Outcome outcome) {
            if (auto* picture = std::get_if<PixelBuffer>(&outcome))
                deliver(order, std::move(*picture));
            else if (auto* error = std::get_if<Error>(&outcome))
                report(order.aimNumber, std::move(*error));
        }));
    return {};
}

Result<bool> PlayerFrames::readBackwards(MediaTime time, const std::vector<std::int32_t>& trackIDs,
                                         BackwardReader::Want want) {
    const auto step = [&](const CompositionSegment& segment, MediaTime until) -> Result<bool> {
        auto& reader = m_backward[{segment.asset->path(), segment.trackIndex}];
        if (!reader)
            reader = std::make_unique<BackwardReader>(segment.asset, segment.trackIndex, readerOptions, m_cache);
        return reader->step(segment.source.start, segment.source.start + (until - segment.target), want);
    };
    for (const std::int32_t trackID : trackIDs) {
        const CompositionTrack* track = m_composition->track(trackID);
        const CompositionSegment* segment = track != nullptr ? track->segmentAt(time) : nullptr;
        if (segment == nullptr)
            continue;
        TRY_LET(const bool hasMore, step(*segment, time));
        if (hasMore)
            return true;
        // The piece before the cut, when nothing more is to be read of this one: both may be of one file.
        const auto kept = m_cache->keptFrom({segment->asset->path(), segment->trackIndex},
                                            segment->source.start + (time - segment->target));
        if (want == BackwardReader::Want::picture || !kept || *kept > segment->source.start)
            continue;
        const MediaTime beforeCut(segment->target.value() - 1, segment->target.timescale());
        const CompositionSegment* before = track->segmentAt(beforeCut);
        if (before == nullptr)
            continue;
        TRY_LET(const bool hasMoreBefore, step(*before, beforeCut));
        if (hasMoreBefore)
            return true;
    }
    return false;
}

void PlayerFrames::deliver(const Order& order, PixelBuffer picture) {
    {
        const std::lock_guard guard(m_lock);
        if (m_aimNumber != order.aimNumber || m_isStopping)
            return;
        --m_underWay;
        m_lastMade = order.index;
        m_ready.push_back({order.index, std::move(picture)});
    }
    m_events.arrived();
    wakeUp();
}

void PlayerFrames::report(std::uint64_t aimNumber, Error error) {
    {
        const std::lock_guard guard(m_lock);
        if (m_aimNumber != aimNumber || m_isStopping)
            return;
        // One failure is enough; a new aim tries again.
        m_next.reset();
    }
    m_events.failed(std::move(error));
}

} // namespace keldra
