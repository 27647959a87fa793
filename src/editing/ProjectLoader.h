#pragma once

#include "base/Result.h"
#include "media/Asset.h"
#include "project/EditorProjectStore.h"

#include <QCoroTask>

#include <functional>
#include <string>

namespace keldra {

/// From a movie file to the project that the editor opens: the one stored for it, as it stands, or a fresh one. Main
/// thread.
class ProjectLoader {
public:
    /// Opens a file away from the main thread and answers on it.
    using AssetLoader = std::function<void(const std::string& path, Completion<AssetPtr> done)>;

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
