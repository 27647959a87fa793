#include "recording/OverlayMapping.h"

#include "base/Overloaded.h"
#include "imaging/FrameFit.h"
#include "recording/CaptureGeometry.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

QRectF windowTarget(const QRectF& frame, double scale, int frameWidth, int frameHeight) {
    const auto pixels = [scale](double points) { return std::max(1, int(std::lround(points * scale))); };
    const PixelRect target = fitInto(pixels(frame.width()), pixels(frame.height()), frameWidth, frameHeight).target;
    return {double(target.x), double(target.y), double(target.width), double(target.height)};
}

} // namespace

OverlaySpace overlaySpaceOf(const CaptureSelection& selection, const Screens& screens, const WindowList& windows,
                            int frameWidth, int frameHeight) {
    const QRectF whole(0, 0, frameWidth, frameHeight);
    return std::visit(Overloaded{
                          [&](const DisplaySelection& display) {
                              const auto screen = findScreen(screens.screens(), display.displayID);
                              return OverlaySpace{screen ? screen->frame : QRectF(), whole};
                          },
                          [&](const RegionSelection& region) {
                              return OverlaySpace{region.rect, whole};
                          },
                          [&](const WindowSelection& window) {
                              const QRectF frame = windows.liveFrame(window.windowID).value_or(window.rect);
                              const double scale = scaleForWindow(screens.screens(), frame);
                              return OverlaySpace{frame, windowTarget(frame, scale, frameWidth, frameHeight)};
                          },
                      },
                      selection);
}

} // namespace keldra
