#pragma once

#include "base/Result.h"
#include "platform/Application.h"

#include <QDateTime>
#include <QJsonObject>
#include <QVariant>

#include <vector>

namespace keldra {

/// What every event says about the program and the machine.
struct EnvironmentInfo {
    bool isDebug = false;
    ApplicationFacts facts;
};

struct AnalyticsEvent {
    QDateTime timestamp;
    QString sessionId;
    QString eventName;
    QJsonObject systemProps;
    QJsonObject props;
};

QJsonObject systemProps(const EnvironmentInfo& environment);

/// The properties as the service takes them: whole numbers, finite real ones, texts and booleans.
/// Errors: the first property of another type, named in the words of the log.
[[nodiscard]] Result<QJsonObject> siftedProperties(const QVariantMap& properties);

/// The JSON array that is sent. Times are UTC, in whole seconds.
QByteArray encodeBatch(const std::vector<AnalyticsEvent>& batch);

} // namespace keldra
