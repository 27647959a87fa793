#include "composition/AssetCache.h"

#include "async/AwaitCompletion.h"

#include <QFile>

#include <cerrno>

namespace keldra {

QCoro::Task<Result<AssetPtr>> AssetCache::open(QUrl url) {
    if (const AssetPtr known = m_opened.value(url))
        co_return known;
    if (!url.isLocalFile())
        co_return fail(systemError(ENOENT, url.toDisplayString().toStdString()));
    const std::string path = QFile::encodeName(url.toLocalFile()).toStdString();
    Result<AssetPtr> opened =
        co_await awaitCompletion<AssetPtr>([&](Completion<AssetPtr> done) { m_load(path, std::move(done)); });
    if (opened)
        m_opened.insert(url, *opened);
    co_return opened;
}

} // namespace keldra
