#pragma once

#include <QUuid>

#include <algorithm>
#include <tuple>

namespace keldra {

/// Orders ids as their upper-case texts; QUuid's own order looks at the variant first.
inline bool textOrderLess(const QUuid& a, const QUuid& b) {
    const auto head = [](const QUuid& id) { return std::tie(id.data1, id.data2, id.data3); };
    if (head(a) != head(b))
        return head(a) < head(b);
    return std::lexicographical_compare(std::begin(a.data4), std::end(a.data4), std::begin(b.data4), std::end(b.data4));
}

/// The canonical text: upper case, no braces.
inline QString uuidText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

} // namespace keldra
