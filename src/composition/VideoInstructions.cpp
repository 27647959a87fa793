#include "composition/VideoInstructions.h"

#include "async/CoTry.h"
#include "base/Log.h"
#include "composition/EditorCompositorInstruction.h"
#include "composition/EditorVideoCompositor.h"
#include "composition/TimelineIntervals.h"
#include "media/EditorCompositionError.h"
#include "project/CanvasGeometry.h"
#include "project/Clean.h"
#include "project/Timeline.h"
#include "project/ZoomEvaluation.h"

#include <cmath>
#include <limits>

namespace keldra {
namespace {

constexpr double maximumFrameRate = std::numeric_limits<std::int32_t>::max();
constexpr double maximumCornerRadiusFraction = 0.5;

float layerOpacity(const EditorSegment& clip, const PlacedPicture& picture) {
    if (!picture.place.isVisible)
        return 0;
    const double opacity = clip.opacity.value_or(1);
    return opacity > 0 ? float(std::min(opacity, 1.0)) : 0;
}

/// Tells of one stretch after the other, in order, whether a zoom ramp touches it; looks only at the blocks nearby.
class RampSweep {
public:
    explicit RampSweep(const QList<ZoomBlock>& sorted) : m_sorted(sorted) {}

    bool touches(double start, double end) {
        for (; m_next < m_sorted.size() && m_sorted[m_next].timelineStart <= end; ++m_next)
            m_near.append(m_sorted[m_next]);
        m_near.removeIf([start](const ZoomBlock& block) { return block.timelineStart + block.duration < start; });
        return zoomRampActive(m_near, start, end);
    }

private:
    QList<ZoomBlock> m_sorted;
    QList<ZoomBlock> m_near;
    qsizetype m_next = 0;
};

/// Makes the instructions of one project, in the order of time.
class InstructionMaker {
public:
    InstructionMaker(const EditorProject& project, const QList<EditorSegment>& clips, const PlacedPictures& pictures)
        : m_style(project.style())
        , m_zoomBlocks(sortedZoomBlocks(project))
        , m_ramps(m_zoomBlocks)
        , m_pictures(pictures) {
        for (const EditorSegment& clip : clips)
            m_clips.insert(clip.id, &clip);
    }

    std::shared_ptr<const VideoInstruction> make(const EditorInstructionInterval& interval) {
        auto instruction = std::make_shared<EditorCompositorInstruction>();
        instruction->timeRange = interval.timeRange;
        const double start = interval.timeRange.start.seconds();
        instruction->containsTweening = m_ramps.touches(start, std::max(start, interval.timeRange.end().seconds()));
        instruction->background = m_style.background;
        instruction->shadow = m_style.shadow.value_or(CanvasShadow{});
        instruction->cornerRadiusFraction =
            finiteWithin(m_style.cornerRadiusFraction.value_or(0), 0, maximumCornerRadiusFraction);
        instruction->zoomBlocks = m_zoomBlocks;
        for (const QUuid& id : interval.activeSegmentIDs)
            addLayer(*instruction, id);
        return instruction;
    }

private:
    void addLayer(EditorCompositorInstruction& instruction, const QUuid& id) const {
        const auto picture = m_pictures.constFind(id);
        const EditorSegment* clip = m_clips.value(id);
        if (!clip || picture == m_pictures.constEnd())
            return;
        instruction.layers.append({picture->trackID, picture->place.transform, layerOpacity(*clip, *picture)});
        instruction.requiredSourceTrackIDs.push_back(picture->trackID);
    }

    CanvasStyle m_style;
    QList<ZoomBlock> m_zoomBlocks;
    RampSweep m_ramps;
    const PlacedPictures& m_pictures;
    QHash<QUuid, const EditorSegment*> m_clips;
};

Result<void> validate(const VideoComposition& videoComposition, const Composition& composition) {
    std::string details;
    for (const std::string& fault : findFaults(videoComposition, composition))
        details += (details.empty() ? "" : "; ") + fault;
    if (details.empty())
        return {};
    logLine("[KELDRA Composition]", "INVALID: " + details);
    return fail(makeError(EditorCompositionError::invalidVideoComposition, details));
}

} // namespace

Result<VideoSettings> videoSettings(const EditorProject& project) {
    const QSize size = renderSize(project);
    const double rate = project.frameRate;
    if (size.isEmpty() || !isPositiveFinite(rate) || rate > maximumFrameRate)
        return fail(makeError(EditorCompositionError::invalidVideoSettings));
    return VideoSettings{size, MediaTime(1, std::int32_t(std::max(1.0, std::round(rate))))};
}

QCoro::Task<Result<VideoComposition>> makeVideoComposition(EditorProject project, QList<EditorSegment> clips,
                                                           VideoSettings settings, PlacedPictures pictures,
                                                           std::shared_ptr<const Composition> composition,
                                                           MainTurn turn) {
    const QList<QUuid> ids = pictures.keys();
    const MediaTime duration = composition->duration();
    const auto intervals = timelineIntervals(clips, QSet<QUuid>(ids.begin(), ids.end()), duration);
    if (!areContinuous(intervals, duration))
        co_return fail(makeError(EditorCompositionError::invalidTimelineInstructions));

    VideoComposition videoComposition;
    videoComposition.renderWidth = settings.renderSize.width();
    videoComposition.renderHeight = settings.renderSize.height();
    videoComposition.frameDuration = settings.frameDuration;
    videoComposition.makeCompositor = [] { return std::make_unique<EditorVideoCompositor>(); };
    InstructionMaker maker(project, clips, pictures);
    for (const EditorInstructionInterval& interval : intervals) {
        if (turn.isOver())
            co_await turn.next();
        videoComposition.instructions.push_back(maker.make(interval));
    }
    CO_TRY(validate(videoComposition, *composition));
    co_return videoComposition;
}

} // namespace keldra
