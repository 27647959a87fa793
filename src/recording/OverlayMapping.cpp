#include "recording/OverlayMapping.h"

#include "base/Overloaded.h"
#include "imaging/FrameFit.h"
#include "recording/CaptureGeometry.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// A source whose size may have changed is fitted into its frames.
OverlaySpace fittedSpace(const QRectF& source, double scale, int frameWidth, int frameHeight) {
    const auto pixels = [scale](double points) { return std::max(1, int(std::lround(points * scale))); };
    const PixelRect target = fitInto(pixels(source.width()), pixels(source.height()), frameWidth, frameHeight).target;
    return {source, {double(target.x), double(target.y), double(target.width), double(target.height)}};
}

QRectF movedWithDisplay(const RegionSelection& region, const Screens& screens, const QRectF& displayAtStart) {
    const auto screen = findScreen(screens.screens(), region.displayID);
    if (!screen || displayAtStart.isEmpty())
        return region.rect;
    // Points count up: the upper left corner is at the rectangle's bottom.
    return region.rect.translated(screen->frame.bottomLeft() - displayAtStart.bottomLeft());
}

} // namespace

OverlaySpace overlaySpaceOf(const CaptureSelection& selection, const Screens& screens, const WindowList& windows,
                            const QRectF& displayAtStart, int frameWidth, int frameHeight) {
    return std::visit(Overloaded{
                          [&](const DisplaySelection& display) {
                              const auto screen = findScreen(screens.screens(), display.displayID);
                              return screen ? fittedSpace(screen->frame, screen->backingScaleFactor, frameWidth,
                                                          frameHeight)
                                            : OverlaySpace();
                          },
                          [&](const RegionSelection& region) {
                              return OverlaySpace{movedWithDisplay(region, screens, displayAtStart),
                                                  QRectF(0, 0, frameWidth, frameHeight)};
                          },
                          [&](const WindowSelection& window) {
                              const QRectF frame = windows.liveFrame(window.windowID).value_or(window.rect);
                              const double scale = scaleForWindow(screens.screens(), frame);
                              return fittedSpace(frame, scale, frameWidth, frameHeight);
                          },
                      },
                      selection);
}

} // namespace keldra
