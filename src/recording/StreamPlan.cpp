#include "recording/StreamPlan.h"

#include "base/Overloaded.h"
#include "recording/CaptureGeometry.h"
#include "recording/ScreenRecorderError.h"

#include <algorithm>

namespace keldra {
namespace {

Result<StreamPlan> planDisplay(const ShareableContentSnapshot& content, const QList<Screen>& screens,
                               std::uint32_t displayID) {
    const bool isThere = std::any_of(content.displays.begin(), content.displays.end(),
                                     [&](const auto& display) { return display.displayID == displayID; });
    if (!isThere)
        return fail(makeError(ScreenRecorderError::couldNotFindDisplay));
    const Screen screen = screenForCapture(screens, displayID);
    const PixelRect size = evenPixelSize(screen.frame.size(), screen.backingScaleFactor);
    return StreamPlan{DisplaySource{displayID}, size, size};
}

Result<StreamPlan> planRegion(const ShareableContentSnapshot& content, const QList<Screen>& screens,
                              const RegionSelection& region) {
    TRY_LET(StreamPlan plan, planDisplay(content, screens, region.displayID));
    const Screen screen = screenForCapture(screens, region.displayID);
    // What is cut out stays in its place.
    plan.source = DisplaySource{region.displayID, true};
    plan.outputSize = evenPixelSize(region.rect.size(), screen.backingScaleFactor);
    return plan;
}

Result<StreamPlan> planWindow(const ShareableContentSnapshot& content, const QList<Screen>& screens,
                              std::uint32_t windowID) {
    const auto window = std::find_if(content.windows.begin(), content.windows.end(),
                                     [&](const auto& candidate) { return candidate.windowID == windowID; });
    if (window == content.windows.end())
        return fail(makeError(ScreenRecorderError::couldNotFindWindow));
    const PixelRect size = evenPixelSize(window->frame.size(), scaleForWindow(screens, window->frame));
    return StreamPlan{WindowSource{windowID}, size, size};
}

} // namespace

Result<StreamPlan> planStream(const ShareableContentSnapshot& content, const QList<Screen>& screens,
                              const CaptureSelection& selection) {
    return std::visit(
        Overloaded{
            [&](const DisplaySelection& display) { return planDisplay(content, screens, display.displayID); },
            [&](const RegionSelection& region) { return planRegion(content, screens, region); },
            [&](const WindowSelection& window) { return planWindow(content, screens, window.windowID); },
        },
        selection);
}

} // namespace keldra
