#pragma once

#include "doubles/ScriptedApplication.h"
#include "doubles/ScriptedHttpSession.h"
#include "doubles/VirtualTime.h"
#include "services/Aptabase.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace keldra::test {

/// Everything that an analytics client stands on, under virtual time, with a calendar that the test turns.
struct AnalyticsWorld {
    static inline const QString key = QStringLiteral("A-EU-123456789");

    VirtualTime time;
    ScriptedHttpSession session{time.mainQueue()};
    ScriptedApplication application;
    QDateTime now = QDateTime::fromString(QStringLiteral("2024-02-29T23:59:58Z"), Qt::ISODate);
    quint32 random = 7;

    AnalyticsTools tools() { return tools(session); }
    AnalyticsTools tools(HttpSession& toldSession) {
        return {toldSession,      time.queue("analytics"), time.mainQueue(),
                time.scheduler(), [this] { return now; },  [this](quint32) { return random++; }};
    }
    Aptabase aptabase() { return aptabase(session, QStringLiteral("https://eu.example.org")); }
    Aptabase aptabase(HttpSession& toldSession, const QString& host) {
        return Aptabase(application, tools(toldSession),
                        {{QStringLiteral("US"), {}}, {QStringLiteral("EU"), host}, {QStringLiteral("DEV"), {}}});
    }

    /// The events of all requests so far, in the order sent.
    QList<QJsonObject> sentEvents() const {
        QList<QJsonObject> events;
        for (const HttpRequest& request : session.requests)
            for (const QJsonValue& event : QJsonDocument::fromJson(*request.body).array())
                events.append(event.toObject());
        return events;
    }
    QStringList sentNames() const {
        QStringList names;
        for (const QJsonObject& event : sentEvents())
            names.append(event["eventName"].toString());
        return names;
    }
};

} // namespace keldra::test
