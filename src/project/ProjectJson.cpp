#include "project/ProjectJson.h"

#include "project/JsonReader.h"
#include "project/JsonWriter.h"

#include <QJsonDocument>

namespace keldra {
namespace {

Error projectError(ProjectJsonError code, const QString& message) {
    return {"keldra.project", int(code), message.toStdString(), {}};
}

template <typename R>
Result<QByteArray> encode(const R& record) {
    JsonWriter writer;
    const QJsonObject object = writer.write(JsonPath{}, record).toObject();
    if (writer.failure())
        return fail(projectError(ProjectJsonError::unwritable, *writer.failure()));
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

template <typename R>
Result<R> decode(const QByteArray& json) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(projectError(
            ProjectJsonError::notJson,
            QStringLiteral("not JSON: %1 at byte %2").arg(parseError.errorString()).arg(parseError.offset)));
    JsonReader reader;
    R record;
    if (document.isObject())
        reader.read(JsonPath{}, document.object(), record);
    else
        return fail(projectError(ProjectJsonError::badValue, QStringLiteral("expected an object")));
    if (reader.failure())
        return fail(projectError(ProjectJsonError::badValue, *reader.failure()));
    return record;
}

} // namespace

Result<QByteArray> encodeProject(const EditorProject& project) {
    return encode(project);
}

Result<EditorProject> decodeProject(const QByteArray& json) {
    return decode<EditorProject>(json);
}

Result<QByteArray> encodeCanvasStyle(const CanvasStyle& style) {
    return encode(style);
}

Result<CanvasStyle> decodeCanvasStyle(const QByteArray& json) {
    return decode<CanvasStyle>(json);
}

} // namespace keldra
