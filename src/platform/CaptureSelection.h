#pragma once

#include <QRectF>
#include <QString>

#include <cstdint>
#include <variant>

namespace keldra {

/// In the order in which they are offered.
enum class CaptureMode { region, window, display };

/// A whole display.
struct DisplaySelection {
    std::uint32_t displayID = 0;
    QString name;
    friend bool operator==(const DisplaySelection&, const DisplaySelection&) = default;
};

/// A part of one display; `rect` in desktop points.
struct RegionSelection {
    std::uint32_t displayID = 0;
    QRectF rect;
    friend bool operator==(const RegionSelection&, const RegionSelection&) = default;
};

/// A window and where it was when picked; `rect` in desktop points.
struct WindowSelection {
    std::uint32_t displayID = 0;
    std::uint32_t windowID = 0;
    QRectF rect;
    QString title;
    friend bool operator==(const WindowSelection&, const WindowSelection&) = default;
};

/// What a recording shows.
using CaptureSelection = std::variant<DisplaySelection, RegionSelection, WindowSelection>;

/// How that was selected.
inline CaptureMode modeOf(const CaptureSelection& selection) {
    if (std::holds_alternative<DisplaySelection>(selection))
        return CaptureMode::display;
    return std::holds_alternative<RegionSelection>(selection) ? CaptureMode::region : CaptureMode::window;
}

} // namespace keldra
