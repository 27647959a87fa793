#pragma once

#include "project/JsonFields.h"
#include "project/JsonNames.h"
#include "project/JsonPath.h"

#include <QJsonArray>
#include <QJsonObject>

namespace keldra {

/// Turns records into JSON values. The first value that JSON cannot hold is kept as the failure, as one line that names
/// the key.
class JsonWriter {
public:
    const std::optional<QString>& failure() const { return m_failure; }

    template <typename R>
    QJsonValue write(const JsonPath& path, const R& record) {
        ObjectArchive archive{*this, path, {}};
        JsonFields<R>::walk(archive, record);
        return archive.object;
    }
    QJsonValue write(const JsonPath& path, double number);
    QJsonValue write(const JsonPath& path, qint64 number);
    QJsonValue write(const JsonPath& path, bool flag);
    QJsonValue write(const JsonPath& path, const QString& text);
    QJsonValue write(const JsonPath& path, const QUrl& url);
    QJsonValue write(const JsonPath& path, const QUuid& id);
    QJsonValue write(const JsonPath& path, const QDateTime& date);

    template <typename E>
    requires std::is_enum_v<E> QJsonValue write(const JsonPath&, const E& enumerator) {
        for (const auto& [candidate, name] : JsonNames<E>::names)
            if (candidate == enumerator)
                return QString::fromLatin1(name);
        return {};
    }

    template <typename T>
    QJsonValue write(const JsonPath& path, const QList<T>& list) {
        QJsonArray array;
        for (qsizetype position = 0; position < list.size(); ++position)
            array.append(write(path.item(position), list.at(position)));
        return array;
    }

    template <typename... Ts>
    QJsonValue write(const JsonPath& path, const std::variant<Ts...>& choice) {
        const char* key = JsonCases<std::variant<Ts...>>::keys[choice.index()];
        const JsonPath place = path.child(key);
        return std::visit(
            [&](const auto& payload) {
                return QJsonObject{{QLatin1String(key), wrap(place, payload)}};
            },
            choice);
    }

private:
    struct ObjectArchive {
        JsonWriter& writer;
        const JsonPath& path;
        QJsonObject object;

        template <typename T>
        void required(const char* key, const T& field) {
            object.insert(QLatin1String(key), writer.write(path.child(key), field));
        }
        template <typename T>
        void defaulted(const char* key, const T& field) {
            required(key, field);
        }
        template <typename T>
        void optional(const char* key, const std::optional<T>& field) {
            if (field)
                required(key, *field);
        }
    };

    template <typename T>
    QJsonValue wrap(const JsonPath& path, const T& payload) {
        if constexpr (payloadHasNames<T>)
            return write(path, payload);
        else
            return QJsonObject{{QLatin1String(payloadKey), write(path.child(payloadKey), payload)}};
    }

    void fail(const JsonPath& path, const QString& reason);

    std::optional<QString> m_failure;
};

} // namespace keldra
