#include "launch/DesktopScale.h"

#include <QtGlobal>

namespace keldra {

DesktopScale::DesktopScale(double factor) {
    set("QT_SCALE_FACTOR", QByteArray::number(factor));
    // Qt would multiply by what it makes of the screens' and the fonts' resolution.
    set("QT_ENABLE_HIGHDPI_SCALING", "0");
    set("QT_FONT_DPI", "96");
    set("QT_SCREEN_SCALE_FACTORS", {});
}

DesktopScale::~DesktopScale() {
    for (const auto& [name, value] : m_before)
        if (value.isNull())
            qunsetenv(name.c_str());
        else
            qputenv(name.c_str(), value);
}

void DesktopScale::set(const std::string& name, const QByteArray& value) {
    m_before[name] = qEnvironmentVariableIsSet(name.c_str()) ? qgetenv(name.c_str()) : QByteArray();
    if (value.isEmpty())
        qunsetenv(name.c_str());
    else
        qputenv(name.c_str(), value);
}

} // namespace keldra
