#include "platform/x11/X11ScaleFactor.h"

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Properties.h"

#include <optional>

namespace keldra {
namespace {

std::optional<double> readFactor(QStringView text, double unit) {
    constexpr double smallest = 0.5, largest = 8;
    bool isNumber = false;
    const double factor = text.toDouble(&isNumber) / unit;
    return isNumber && factor >= smallest && factor <= largest ? std::optional(factor) : std::nullopt;
}

QString findDpi(const QString& resources) {
    for (const QString& line : resources.split(u'\n')) {
        const qsizetype colon = line.indexOf(u':');
        if (colon >= 0 && QStringView(line).left(colon).trimmed() == u"Xft.dpi")
            return line.mid(colon + 1).trimmed();
    }
    return {};
}

} // namespace

double scaleFactor(const QString& qtScaleFactor, const QString& resources) {
    constexpr double dotsPerInch = 96;
    if (const auto factor = readFactor(qtScaleFactor, 1))
        return *factor;
    return readFactor(findDpi(resources), dotsPerInch).value_or(1);
}

Result<double> readX11ScaleFactor(const QString& qtScaleFactor) {
    TRY_LET(const std::shared_ptr<X11Connection> connection, X11Connection::open());
    const auto request = askProperty(*connection, connection->root(), XCB_ATOM_RESOURCE_MANAGER);
    return scaleFactor(qtScaleFactor, readText(*connection, request));
}

} // namespace keldra
