#include "recording/DisplayPlan.h"

#include "base/Overloaded.h"
#include "recording/CaptureGeometry.h"
#include "recording/ScreenRecorderError.h"

namespace keldra {
namespace {

/// A window may come without the number of its display.
std::optional<Screen> screenOf(const QList<Screen>& screens, std::uint32_t displayID, const QRectF& rect) {
    if (const auto screen = findScreen(screens, displayID))
        return screen;
    for (const Screen& screen : screens)
        if (screen.frame.contains(rect.center()))
            return screen;
    return std::nullopt;
}

Result<DisplayCaptureConfiguration> planPiece(const std::optional<Screen>& screen, const QRectF& rect) {
    if (!screen)
        return fail(makeError(ScreenRecorderError::couldNotCreateScreenInput));
    const double scale = screen->backingScaleFactor;
    const PixelRect size = evenPixelSize(rect.size(), scale);
    const auto crop = cropForRegion(rect, screen->frame, int(screen->frame.width() * scale),
                                    int(screen->frame.height() * scale), size.width, size.height);
    DisplayCaptureConfiguration configuration;
    configuration.displayID = screen->number;
    configuration.crop = crop.value_or(size);
    return configuration;
}

} // namespace

Result<DisplayCaptureConfiguration> planDisplayCapture(const QList<Screen>& screens,
                                                       const CaptureSelection& selection) {
    return std::visit(Overloaded{
                          [&](const DisplaySelection& display) {
                              const auto screen = findScreen(screens, display.displayID);
                              return planPiece(screen, screen ? screen->frame : QRectF());
                          },
                          [&](const RegionSelection& region) {
                              return planPiece(findScreen(screens, region.displayID), region.rect);
                          },
                          [&](const WindowSelection& window) {
                              return planPiece(screenOf(screens, window.displayID, window.rect), window.rect);
                          },
                      },
                      selection);
}

} // namespace keldra
