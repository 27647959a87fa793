#include "project/FreshProject.h"

#include "project/Clean.h"

namespace keldra {
namespace {

constexpr double defaultFrameRate = 30;

/// A file may not state its rate, and nothing can be built at none.
double frameRate(const SourceFacts& facts) {
    return facts.video && isPositiveFinite(facts.video->nominalFrameRate) ? facts.video->nominalFrameRate
                                                                          : defaultFrameRate;
}

QSizeF uprightSize(const SourceFacts& facts) {
    if (!facts.video)
        return {0, 0};
    const QSizeF size = facts.video->naturalSize;
    const QTransform& turn = facts.video->preferredTransform;
    return {std::abs(turn.m11() * size.width() + turn.m21() * size.height()),
            std::abs(turn.m12() * size.width() + turn.m22() * size.height())};
}

} // namespace

EditorProject makeFreshProject(const QUrl& sourceURL, bool hasLiveClickTrack, const SourceFacts& facts,
                               const QDateTime& now) {
    EditorProject project;
    project.id = QUuid::createUuid();
    project.sourceURL = sourceURL;
    project.createdAt = now;
    project.updatedAt = now;
    project.frameRate = frameRate(facts);
    project.sourceDuration = isPositiveFinite(facts.durationSeconds) ? facts.durationSeconds : 0;
    const QSizeF size = uprightSize(facts);
    project.canvasWidth = size.width();
    project.canvasHeight = size.height();

    EditorSegment segment;
    segment.id = QUuid::createUuid();
    segment.duration = project.sourceDuration;
    project.segments = {segment};
    // The second row is empty, so that there is always a free one to drop on.
    project.tracks = QList<EditorTrack>{{QUuid::createUuid(), 0, EditorTrackKind::video, false},
                                        {QUuid::createUuid(), 1, EditorTrackKind::video, false}};
    project.canvas = freshCanvasStyle();
    project.zoomBlocks = QList<ZoomBlock>{};
    project.hasLiveClickTrack = hasLiveClickTrack;
    return project;
}

} // namespace keldra
