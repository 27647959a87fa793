#include "services/AnalyticsEvent.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <charconv>
#include <cmath>
#include <iterator>

namespace keldra {
namespace {

/// 0.1f widened would be written as 0.10000000149011612.
double sameDigits(float number) {
    char digits[32];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), number);
    return QByteArray::fromRawData(digits, end - digits).toDouble();
}

/// Undefined for what the service does not take.
QJsonValue plainValue(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::Double:
        return std::isfinite(value.toDouble()) ? QJsonValue(value.toDouble()) : QJsonValue(QJsonValue::Undefined);
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Float:
        return plainValue(sameDigits(value.toFloat()));
    case QMetaType::Bool:
        return value.toBool();
    default:
        return QJsonValue::Undefined;
    }
}

} // namespace

QJsonObject systemProps(const EnvironmentInfo& environment) {
    const ApplicationFacts& facts = environment.facts;
    return {{"isDebug", environment.isDebug},        {"locale", facts.locale},          {"osName", facts.osName},
            {"osVersion", facts.osVersion},          {"appVersion", facts.version},     {"appBuildNumber", facts.build},
            {"sdkVersion", "aptabase-swift@0.3.11"}, {"deviceModel", facts.deviceModel}};
}

Result<QJsonObject> siftedProperties(const QVariantMap& properties) {
    QJsonObject sifted;
    for (auto property = properties.begin(); property != properties.end(); ++property) {
        const QJsonValue value = plainValue(property.value());
        if (value.isUndefined())
            return fail(Error{"AptabaseError",
                              0,
                              "Aptabase: Props with key " + property.key().toStdString() +
                                  " has an unsupported value type. Supported types are: String, Int, Double, Float and "
                                  "Boolean. Event will be discarded",
                              {}});
        sifted.insert(property.key(), value);
    }
    return sifted;
}

QByteArray encodeBatch(const std::vector<AnalyticsEvent>& batch) {
    QJsonArray events;
    for (const AnalyticsEvent& event : batch)
        events.append(QJsonObject{{"timestamp", event.timestamp.toUTC().toString(Qt::ISODate)},
                                  {"sessionId", event.sessionId},
                                  {"eventName", event.eventName},
                                  {"systemProps", event.systemProps},
                                  {"props", event.props}});
    return QJsonDocument(events).toJson(QJsonDocument::Compact);
}

} // namespace keldra
