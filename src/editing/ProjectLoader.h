#pragma once

#include "base/Result.h"
#include "composition/AssetCache.h"
#include "project/EditorProjectStore.h"

#include <QCoroTask>

namespace keldra {

/// From a movie file to the project that the editor opens: the one stored for it, as it stands, or a fresh one. Main
/// thread.
class ProjectLoader {
public:
    /// All must outlive the loader's tasks.
    ProjectLoader(AssetLoader loadAsset, EditorProjectStore& store, Executor& mainQueue)
        : m_loadAsset(std::move(loadAsset)), m_store(store), m_mainQueue(mainQueue) {}

    /// `now` becomes the dates of a fresh project. Errors: the file's, as Asset words them, and the store's when its
    /// folder cannot be listed.
    QCoro::Task<Result<EditorProject>> load(QUrl sourceURL, bool hasLiveClickTrack, QDateTime now);

private:
    AssetLoader m_loadAsset;
    EditorProjectStore& m_store;
    Executor& m_mainQueue;
};

} // namespace keldra
