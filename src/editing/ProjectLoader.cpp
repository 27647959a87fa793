#include "editing/ProjectLoader.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "project/FreshProject.h"

namespace keldra {
namespace {

QTransform toQTransform(const AffineTransform& transform) {
    return QTransform(transform.a, transform.b, transform.c, transform.d, transform.tx, transform.ty);
}

SourceFacts factsOf(const Asset& asset) {
    SourceFacts facts;
    facts.durationSeconds = asset.duration().seconds();
    const auto videoTracks = asset.tracks(MediaKind::video);
    if (!videoTracks.empty()) {
        const AssetTrack& track = videoTracks.front();
        facts.video =
            SourceFacts::Video{track.nominalFrameRate, QSizeF(track.naturalSize.width, track.naturalSize.height),
                               toQTransform(track.preferredTransform)};
    }
    return facts;
}

} // namespace

QCoro::Task<Result<EditorProject>> ProjectLoader::load(QUrl sourceURL, bool hasLiveClickTrack, QDateTime now) {
    const std::string path = sourceURL.toLocalFile().toStdString();
    CO_TRY_LET(const AssetPtr asset, co_await awaitCompletion<AssetPtr>(
                                         [&](Completion<AssetPtr> done) { m_loadAsset(path, std::move(done)); }));
    const EditorProject fresh = makeFreshProject(sourceURL, hasLiveClickTrack, factsOf(*asset), now);
    using Stored = std::optional<EditorProject>;
    CO_TRY_LET(const Stored stored, co_await awaitCompletion<Stored>([&](Completion<Stored> done) {
                   m_store.loadRecoveredProject(sourceURL, m_mainQueue, std::move(done));
               }));
    co_return stored.value_or(fresh);
}

} // namespace keldra
