#include "project/EditorProjectStore.h"

#include "base/DataFolder.h"
#include "project/ProjectJson.h"
#include "project/UuidOrder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <filesystem>

namespace keldra {
namespace {

namespace fs = std::filesystem;

Error storeError(const QString& name, const QString& words) {
    return Error{"keldra.store", 1, (name + QStringLiteral(": ") + words).toStdString(), {}};
}

/// Equal for URLs that name one file by different spellings; symbolic links are not followed.
QUrl standardized(const QUrl& url) {
    if (url.isLocalFile())
        return QUrl::fromLocalFile(QDir::cleanPath(url.toLocalFile()));
    return url.adjusted(QUrl::NormalizePathSegments | QUrl::StripTrailingSlash);
}

/// The string that begins at `json`'s quote, decoded; nothing when it is not a whole string.
std::optional<QString> leadingString(QByteArrayView json) {
    qsizetype end = 1;
    while (end < json.size() && json[end] != '"')
        end += json[end] == '\\' ? 2 : 1;
    if (json.isEmpty() || json.front() != '"' || end >= json.size())
        return std::nullopt;
    const auto document = QJsonDocument::fromJson('[' + json.first(end + 1).toByteArray() + ']');
    return document.isArray() ? std::optional(document.array().at(0).toString()) : std::nullopt;
}

/// Whether a project file may be one for that source, told from its text without decoding it: a folder of many large
/// projects is then only read, not parsed. Never false for one that is.
bool mayBelongTo(const QByteArray& json, const QUrl& standardizedSource) {
    // A key may be spelled with escapes, which nothing of ours writes; let the decoder judge such a file.
    if (json.contains("\\u"))
        return true;
    constexpr QByteArrayView key("\"sourceURL\"");
    for (qsizetype at = json.indexOf(key); at >= 0; at = json.indexOf(key, at + 1)) {
        qsizetype value = at + key.size();
        while (value < json.size() && (std::isspace(static_cast<unsigned char>(json[value])) || json[value] == ':'))
            ++value;
        const auto text = leadingString(QByteArrayView(json).sliced(value));
        if (text && standardized(QUrl(*text)) == standardizedSource)
            return true;
    }
    return false;
}

std::optional<EditorProject> projectFor(const QUrl& standardizedSource, const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray json = file.readAll();
    if (!mayBelongTo(json, standardizedSource))
        return std::nullopt;
    auto project = decodeProject(json);
    if (!project || standardized(project->sourceURL) != standardizedSource)
        return std::nullopt;
    return std::move(*project);
}

/// A disk that fills up takes a part first and says why only when asked for the rest.
bool writeAll(QSaveFile& file, QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        const qint64 written = file.write(bytes.data(), bytes.size());
        if (written <= 0)
            return false;
        bytes = bytes.sliced(written);
    }
    return true;
}

/// The folder's visible *.json files by name.
Result<QStringList> listProjectFiles(const QString& directory) {
    std::error_code error;
    QStringList paths;
    for (fs::directory_iterator entry(directory.toStdString(), error), end; !error && entry != end;
         entry.increment(error)) {
        const QString name = QString::fromStdString(entry->path().filename().string());
        if (!name.startsWith(u'.') && name.endsWith(u".json"))
            paths += QDir(directory).filePath(name);
    }
    if (error)
        return fail(storeError(directory, QString::fromStdString(error.message())));
    paths.sort();
    return paths;
}

} // namespace

QString defaultRecoveryDirectory() {
    return QString::fromStdString(dataFolder()) + QStringLiteral("/EditorRecovery");
}

Result<void> saveProject(const EditorProject& project, const QString& directory) {
    std::error_code error;
    fs::create_directories(directory.toStdString(), error);
    if (error)
        return fail(storeError(directory, QString::fromStdString(error.message())));
    TRY_LET(const QByteArray json, encodeProject(project));
    QSaveFile file(QDir(directory).filePath(uuidText(project.id) + QStringLiteral(".keldra-project.json")));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !writeAll(file, json) || !file.commit())
        return fail(storeError(file.fileName(), file.errorString()));
    return {};
}

Result<std::optional<EditorProject>> findRecoveredProject(const QUrl& sourceURL, const QString& directory) {
    std::error_code error;
    if (!fs::exists(directory.toStdString(), error))
        return std::nullopt;
    TRY_LET(const QStringList paths, listProjectFiles(directory));
    const QUrl source = standardized(sourceURL);
    std::optional<EditorProject> newest;
    for (const QString& path : paths) {
        std::optional<EditorProject> candidate = projectFor(source, path);
        if (candidate && (!newest || candidate->updatedAt > newest->updatedAt))
            newest = std::move(candidate);
    }
    return newest;
}

EditorProjectStore::EditorProjectStore(QString recoveryDirectory) : m_recoveryDirectory(std::move(recoveryDirectory)) {}

void EditorProjectStore::save(EditorProject project, Executor& answer, Completion<void> done) {
    m_queue.post(
        [project = std::move(project), directory = m_recoveryDirectory, &answer, done = std::move(done)]() mutable {
            answer.post([done = std::move(done), result = saveProject(project, directory)] { done(result); });
        });
}

void EditorProjectStore::loadRecoveredProject(QUrl sourceURL, Executor& answer,
                                              Completion<std::optional<EditorProject>> done) {
    m_queue.post([sourceURL = std::move(sourceURL), directory = m_recoveryDirectory, &answer,
                  done = std::move(done)]() mutable {
        answer.post([done = std::move(done), result = findRecoveredProject(sourceURL, directory)] { done(result); });
    });
}

} // namespace keldra
