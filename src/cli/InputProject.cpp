#include "cli/InputProject.h"

#include "async/CoTry.h"
#include "editing/ProjectLoader.h"
#include "project/ProjectJson.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

namespace keldra {
namespace {

/// Movies do not begin with a brace, and project files begin with nothing else.
bool beginsLikeJson(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(512).trimmed().startsWith('{');
}

Error about(const QString& path, Error error) {
    error.message = path.toStdString() + ": " + error.message;
    return error;
}

} // namespace

Result<QByteArray> readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(about(path, Error{"File", 1, file.errorString().toStdString(), {}}));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(about(path, Error{"File", 1, file.errorString().toStdString(), {}}));
    return bytes;
}

Result<void> checkNotAnInput(const QString& output, const QString& input, const EditorProject& project) {
    const QString target = QFileInfo(output).canonicalFilePath();
    QStringList sources = {input, project.sourceURL.toLocalFile()};
    for (const EditorSegment& segment : project.segments)
        if (segment.sourceURL)
            sources += segment.sourceURL->toLocalFile();
    for (const QString& source : sources)
        if (!target.isEmpty() && target == QFileInfo(source).canonicalFilePath())
            return fail(
                Error{"Output", 1, output.toStdString() + ": this is the input; name another file to write", {}});
    return {};
}

QCoro::Task<Result<EditorProject>> InputProject::load(QString path) {
    if (beginsLikeJson(path)) {
        CO_TRY_LET(const QByteArray json, readFile(path));
        co_return decodeProject(json).map_error([&](Error error) { return about(path, std::move(error)); });
    }
    ProjectLoader loader(assetLoader(), m_store, m_context.mainQueue);
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    co_return co_await loader.load(url, false, QDateTime::currentDateTimeUtc());
}

QCoro::Task<Result<EditorCompositionOutput>> InputProject::build(EditorProject project) {
    EditorCompositionBuilder builder(assetLoader(), MainTurn(m_context.mainQueue, m_context.clock));
    co_return co_await builder.build(std::move(project));
}

AssetLoader InputProject::assetLoader() {
    return [this](const std::string& path, Completion<AssetPtr> done) {
        Asset::load(path, m_files, m_context.mainQueue, std::move(done));
    };
}

} // namespace keldra
