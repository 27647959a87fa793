#pragma once

#include "platform/CaptureSelection.h"
#include "platform/Screens.h"
#include "platform/WindowList.h"

#include <optional>

namespace keldra {

/// Where what is selected is now, desktop points: a window that is gone is where it was picked, and nothing is known of
/// a display that is gone.
inline std::optional<QRectF> selectedRect(const CaptureSelection& selection, const QList<Screen>& screens,
                                          const WindowList& windows) {
    if (const auto* display = std::get_if<DisplaySelection>(&selection)) {
        const auto screen = findScreen(screens, display->displayID);
        return screen ? std::optional(screen->frame) : std::nullopt;
    }
    if (const auto* window = std::get_if<WindowSelection>(&selection))
        return windows.liveFrame(window->windowID).value_or(window->rect);
    return std::get<RegionSelection>(selection).rect;
}

} // namespace keldra
