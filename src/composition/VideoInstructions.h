#pragma once

#include "async/MainTurn.h"
#include "base/Result.h"
#include "composition/ClipTransform.h"
#include "media/Composition.h"
#include "media/VideoComposition.h"
#include "project/EditorProject.h"

#include <QCoroTask>
#include <QHash>
#include <QUuid>

#include <memory>
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
QCoro::Task<Result<VideoComposition>> makeVideoComposition(EditorProject project, QList<EditorSegment> clips,
                                                           VideoSettings settings, PlacedPictures pictures,
                                                           std::shared_ptr<const Composition> composition,
                                                           MainTurn turn);

} // namespace keldra
