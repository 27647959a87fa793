#pragma once

#include "base/Result.h"
#include "composition/ClipTransform.h"
#include "media/Composition.h"
#include "media/VideoComposition.h"
#include "project/EditorProject.h"

#include <QHash>
#include <QUuid>

#include <optional>

namespace keldra {

/// Where the picture of a clip is to be had, and where it goes.
struct PlacedPicture {
    std::int32_t trackID = 0;
    ClipTransform place;
};
/// By clip id.
using PlacedPictures = QHash<QUuid, PlacedPicture>;

/// Size and rate of a project's frames.
struct VideoSettings {
    QSize renderSize;
    MediaTime frameDuration;
};

/// Errors: EditorCompositionError::invalidVideoSettings.
Result<VideoSettings> videoSettings(const EditorProject& project);

/// The instructions for every stretch of the composition, with the compositor that draws them, checked. `clips` come
/// from visibleSegments(). Errors: EditorCompositionError.
Result<VideoComposition> makeVideoComposition(const EditorProject& project, const QList<EditorSegment>& clips,
                                              const VideoSettings& settings, const PlacedPictures& pictures,
                                              const Composition& composition);

} // namespace keldra
