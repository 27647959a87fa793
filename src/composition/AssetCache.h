#pragma once

#include "base/Result.h"
#include "media/Asset.h"

#include <QCoroTask>
#include <QHash>
#include <QUrl>

#include <functional>
#include <string>

namespace keldra {

/// Opens a media file; the completion runs on main.
using AssetLoader = std::function<void(const std::string& path, Completion<AssetPtr>)>;

/// The files of one build, each opened once however many clips use it. Main thread.
class AssetCache {
public:
    explicit AssetCache(AssetLoader load) : m_load(std::move(load)) {}

    /// Errors: the loader's own; a URL that names no file. This object must outlive the task.
    QCoro::Task<Result<AssetPtr>> open(QUrl url);

private:
    AssetLoader m_load;
    QHash<QUrl, AssetPtr> m_opened;
};

} // namespace keldra
