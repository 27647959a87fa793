#pragma once

#include "async/MainTurn.h"
#include "base/Result.h"
#include "composition/AssetCache.h"
#include "composition/AudioPlacement.h"
#include "media/Composition.h"
#include "media/EditorCompositionError.h"
#include "media/VideoComposition.h"
#include "project/EditorProject.h"
#include "project/FreshProject.h"

#include <QCoroTask>
#include <QHash>
#include <QUuid>

#include <memory>
#include <optional>

namespace keldra {

/// What a project becomes: something that plays and exports.
struct EditorCompositionOutput {
    /// All media of all clips.
    std::shared_ptr<const Composition> composition;
    /// Not set when no clip placed a picture.
    std::optional<VideoComposition> videoComposition;
    /// Not set when no clip placed a sound.
    std::optional<AudioMix> audioMix;
    /// The composition track of each clip that placed a picture.
    QHash<QUuid, std::int32_t> videoTrackIDsBySegment;
    /// Every sound that was placed: audioMix() makes the mix anew from them.
    QList<EditorAudioPlacementRecord> audioPlacements;
};

/// Turns projects into compositions, for preview and export alike. Holds nothing of a project; it may go while a build
/// runs.
///
/// Threads: main, whose loop has its turn at least every MainTurn::length. A build opens each file once.
/// Errors:  EditorCompositionError; those of the files and of the composition, unchanged.
class EditorCompositionBuilder {
public:
    EditorCompositionBuilder(AssetLoader loadAsset, MainTurn turn)
        : m_loadAsset(std::move(loadAsset)), m_turn(std::move(turn)) {}

    QCoro::Task<Result<EditorCompositionOutput>> build(EditorProject project) const;

    /// The pictures anew for a composition whose tracks stand: for edits that move no clip.
    QCoro::Task<Result<VideoComposition>>
    refreshVideoComposition(EditorProject project, std::shared_ptr<const Composition> composition,
                            QHash<QUuid, std::int32_t> videoTrackIDsBySegment) const;

private:
    AssetLoader m_loadAsset;
    MainTurn m_turn;
};

/// What a fresh project needs to know of an opened file.
SourceFacts sourceFacts(const Asset& asset);

} // namespace keldra
