#include "project/JsonReader.h"

#include "project/UuidOrder.h"

namespace keldra {
namespace {

constexpr qsizetype uuidTextLength = 36;
constexpr qsizetype dateTextLength = 20;

} // namespace

void JsonReader::read(const JsonPath& path, const QJsonValue& value, double& number) {
    if (!value.isDouble())
        return fail(path, QStringLiteral("expected a number"));
    number = value.toDouble();
}

void JsonReader::read(const JsonPath& path, const QJsonValue& value, qint64& number) {
    // A number without an exact integer gives the default back, whichever that is.
    number = value.toInteger(0);
    if (!value.isDouble() || number != value.toInteger(1))
        fail(path, QStringLiteral("expected a whole number"));
}

void JsonReader::read(const JsonPath& path, const QJsonValue& value, bool& flag) {
    if (!value.isBool())
        return fail(path, QStringLiteral("expected true or false"));
    flag = value.toBool();
}

void JsonReader::read(const JsonPath& path, const QJsonValue& value, QString& text) {
    if (!value.isString())
        return fail(path, QStringLiteral("expected a string"));
    text = value.toString();
}

void JsonReader::read(const JsonPath& path, const QJsonValue& value, QUrl& url) {
    url = QUrl(value.toString());
    if (!value.isString() || url.isEmpty() || !url.isValid())
        fail(path, QStringLiteral("expected a URL"));
}

void JsonReader::read(const JsonPath& path, const QJsonValue& value, QUuid& id) {
    const QString text = value.toString();
    id = QUuid::fromString(text);
    if (text.size() != uuidTextLength || uuidText(id) != text.toUpper())
        fail(path, QStringLiteral("expected a UUID"));
}

void JsonReader::read(const JsonPath& path, const QJsonValue& value, QDateTime& date) {
    const QString text = value.toString();
    date = QDateTime::fromString(text, Qt::ISODate);
    if (text.size() != dateTextLength || !text.endsWith(u'Z') || !date.isValid())
        fail(path, QStringLiteral("expected a date like 2024-01-31T12:00:00Z"));
}

void JsonReader::fail(const JsonPath& path, const QString& expectation) {
    if (m_failure)
        return;
    const QString place = path.text();
    m_failure = place.isEmpty() ? expectation : place + QStringLiteral(": ") + expectation;
}

} // namespace keldra
