#include "editing/ProjectLoader.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "composition/EditorCompositionBuilder.h"
#include "project/FreshProject.h"

namespace keldra {
QCoro::Task<Result<EditorProject>> ProjectLoader::load(QUrl sourceURL, bool hasLiveClickTrack, QDateTime now) {
    const std::string path = sourceURL.toLocalFile().toStdString();
    CO_TRY_LET(const AssetPtr asset, co_await awaitCompletion<AssetPtr>(
                                         [&](Completion<AssetPtr> done) { m_loadAsset(path, std::move(done)); }));
    const EditorProject fresh = makeFreshProject(sourceURL, hasLiveClickTrack, sourceFacts(*asset), now);
    using Stored = std::optional<EditorProject>;
    CO_TRY_LET(const Stored stored, co_await awaitCompletion<Stored>([&](Completion<Stored> done) {
                   m_store.loadRecoveredProject(sourceURL, m_mainQueue, std::move(done));
               }));
    co_return stored.value_or(fresh);
}

} // namespace keldra
