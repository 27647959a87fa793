#pragma once

#include <QString>

namespace keldra {

/// Where a reader or writer stands, e.g. `segments[2].duration`: a chain of frames on the stack, spelled out only when
/// something fails.
struct JsonPath {
    const JsonPath* parent = nullptr;
    const char* key = nullptr;
    qsizetype index = -1;

    JsonPath child(const char* name) const { return {this, name, -1}; }
    JsonPath item(qsizetype position) const { return {this, nullptr, position}; }

    QString text() const {
        const QString before = parent ? parent->text() : QString();
        if (index >= 0)
            return before + QStringLiteral("[%1]").arg(index);
        if (!key)
            return before;
        const QString name = QString::fromLatin1(key);
        return before.isEmpty() ? name : before + u'.' + name;
    }
};

} // namespace keldra
