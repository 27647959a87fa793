#pragma once

#include "project/JsonFields.h"
#include "project/JsonNames.h"
#include "project/JsonPath.h"

#include <QJsonArray>
#include <QJsonObject>

namespace keldra {

/// Fills records from JSON values. The first failure is kept, as one line that names the key; everything after it is
/// left alone.
class JsonReader {
public:
    const std::optional<QString>& failure() const { return m_failure; }

    template <typename R>
    void read(const JsonPath& path, const QJsonValue& value, R& record) {
        if (!value.isObject())
            return fail(path, QStringLiteral("expected an object"));
        ObjectArchive archive{*this, path, value.toObject()};
        JsonFields<R>::walk(archive, record);
    }
    void read(const JsonPath& path, const QJsonValue& value, double& number);
    void read(const JsonPath& path, const QJsonValue& value, qint64& number);
    void read(const JsonPath& path, const QJsonValue& value, bool& flag);
    void read(const JsonPath& path, const QJsonValue& value, QString& text);
    void read(const JsonPath& path, const QJsonValue& value, QUrl& url);
    void read(const JsonPath& path, const QJsonValue& value, QUuid& id);
    void read(const JsonPath& path, const QJsonValue& value, QDateTime& date);

    template <typename E>
    requires std::is_enum_v<E>
    void read(const JsonPath& path, const QJsonValue& value, E& enumerator) {
        const QString text = value.toString();
        QStringList known;
        for (const auto& [candidate, name] : JsonNames<E>::names) {
            if (value.isString() && text == QLatin1String(name)) {
                enumerator = candidate;
                return;
            }
            known.append(QString::fromLatin1(name));
        }
        fail(path, QStringLiteral("expected one of ") + known.join(QStringLiteral(", ")));
    }

    template <typename T>
    void read(const JsonPath& path, const QJsonValue& value, QList<T>& list) {
        if (!value.isArray())
            return fail(path, QStringLiteral("expected an array"));
        const QJsonArray array = value.toArray();
        list.clear();
        list.reserve(array.size());
        for (qsizetype position = 0; position < array.size() && !m_failure; ++position)
            read(path.item(position), array.at(position), list.emplaceBack());
    }

    template <typename... Ts>
    void read(const JsonPath& path, const QJsonValue& value, std::variant<Ts...>& choice) {
        using Choice = std::variant<Ts...>;
        if (!value.isObject())
            return fail(path, QStringLiteral("expected an object"));
        const QJsonObject object = value.toObject();
        if (object.size() != 1)
            return fail(path, QStringLiteral("Invalid number of keys found, expected one."));
        if (!readCase<Choice, 0>(path, object.constBegin().key(), object.constBegin().value(), choice))
            fail(path, QStringLiteral("expected the key ") + caseKeys<Choice>().join(QStringLiteral(" or ")));
    }

private:
    struct ObjectArchive {
        JsonReader& reader;
        const JsonPath& path;
        const QJsonObject object;

        template <typename T>
        void required(const char* key, T& field) {
            const auto found = object.constFind(QLatin1String(key));
            if (found == object.constEnd())
                return reader.fail(path.child(key), QStringLiteral("the key is missing"));
            reader.readUnlessFailed(path.child(key), *found, field);
        }
        template <typename T>
        void defaulted(const char* key, T& field) {
            const auto found = object.constFind(QLatin1String(key));
            if (found != object.constEnd() && !found->isNull())
                reader.readUnlessFailed(path.child(key), *found, field);
        }
        template <typename T>
        void optional(const char* key, std::optional<T>& field) {
            const auto found = object.constFind(QLatin1String(key));
            field.reset();
            if (found != object.constEnd() && !found->isNull())
                reader.readUnlessFailed(path.child(key), *found, field.emplace());
        }
    };

    template <typename T>
    void readUnlessFailed(const JsonPath& path, const QJsonValue& value, T& field) {
        if (!m_failure)
            read(path, value, field);
    }

    template <typename Choice, std::size_t position>
    bool readCase(const JsonPath& path, const QString& key, const QJsonValue& value, Choice& choice) {
        if constexpr (position == std::variant_size_v<Choice>) {
            return false;
        } else {
            if (key != QLatin1String(JsonCases<Choice>::keys[position]))
                return readCase<Choice, position + 1>(path, key, value, choice);
            readPayload(path.child(JsonCases<Choice>::keys[position]), value, choice.template emplace<position>());
            return true;
        }
    }

    template <typename T>
    void readPayload(const JsonPath& path, const QJsonValue& value, T& payload) {
        if constexpr (payloadHasNames<T>) {
            read(path, value, payload);
        } else {
            if (!value.isObject())
                return fail(path, QStringLiteral("expected an object"));
            const QJsonValue inner = value.toObject().value(QLatin1String(payloadKey));
            if (inner.isUndefined())
                return fail(path.child(payloadKey), QStringLiteral("the key is missing"));
            read(path.child(payloadKey), inner, payload);
        }
    }

    template <typename Choice>
    static QStringList caseKeys() {
        QStringList keys;
        for (const char* key : JsonCases<Choice>::keys)
            keys.append(QString::fromLatin1(key));
        return keys;
    }

    void fail(const JsonPath& path, const QString& expectation);

    std::optional<QString> m_failure;
};

} // namespace keldra
