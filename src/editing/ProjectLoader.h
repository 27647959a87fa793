#pragma once

#include "base/Result.h"
#include "media/Asset.h"
#include "project/EditorProject.h"

#include <QCoroTask>

#include <functional>
#include <string>

namespace keldra {

/// From a movie file to the project that the editor opens. Main thread.
class ProjectLoader {
public:
    /// Opens a file away from the main thread and answers on it.
    using AssetLoader = std::function<void(const std::string& path, Completion<AssetPtr> done)>;

    explicit ProjectLoader(AssetLoader loadAsset) : m_loadAsset(std::move(loadAsset)) {}

    /// `now` becomes the dates of a fresh project. Errors: the file's, as Asset words them.
    QCoro::Task<Result<EditorProject>> load(QUrl sourceURL, bool hasLiveClickTrack, QDateTime now);

private:
    AssetLoader m_loadAsset;
};

} // namespace keldra
