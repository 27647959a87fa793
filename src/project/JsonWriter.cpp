#include "project/JsonWriter.h"

#include "project/UuidOrder.h"

#include <cmath>

namespace keldra {

QJsonValue JsonWriter::write(const JsonPath& path, double number) {
    if (!std::isfinite(number))
        fail(path, QStringLiteral("the number is not finite"));
    return number;
}

QJsonValue JsonWriter::write(const JsonPath&, qint64 number) {
    return number;
}

QJsonValue JsonWriter::write(const JsonPath&, bool flag) {
    return flag;
}

QJsonValue JsonWriter::write(const JsonPath&, const QString& text) {
    return text;
}

QJsonValue JsonWriter::write(const JsonPath& path, const QUrl& url) {
    if (url.isEmpty() || !url.isValid())
        fail(path, QStringLiteral("the URL is empty or invalid"));
    return url.toString(QUrl::FullyEncoded);
}

QJsonValue JsonWriter::write(const JsonPath&, const QUuid& id) {
    return uuidText(id);
}

QJsonValue JsonWriter::write(const JsonPath& path, const QDateTime& date) {
    const QDateTime utc = date.toUTC();
    if (!utc.isValid() || utc.date().year() < 0 || utc.date().year() > 9999)
        fail(path, QStringLiteral("the date cannot be written"));
    return utc.toString(Qt::ISODate);
}

void JsonWriter::fail(const JsonPath& path, const QString& reason) {
    if (!m_failure)
        m_failure = path.text() + QStringLiteral(": ") + reason;
}

} // namespace keldra
