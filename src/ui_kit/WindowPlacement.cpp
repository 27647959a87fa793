#include "ui_kit/WindowPlacement.h"

#include <QGuiApplication>
#include <QWindow>

namespace keldra {

bool canPlaceWindows() {
    static const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return !isWayland;
}

void keepSize(QWindow& window) {
    if (canPlaceWindows())
        return;
    window.setMinimumSize(window.size());
    window.setMaximumSize(window.size());
}

} // namespace keldra
