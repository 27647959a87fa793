#include "recording/CaptureGeometry.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

int evenSide(double pixels) {
    const int whole = int(std::clamp(pixels, 2.0, 32768.0));
    return whole - whole % 2;
}

} // namespace

PixelRect evenPixelSize(QSizeF points, double scale) {
    return {0, 0, evenSide(points.width() * scale), evenSide(points.height() * scale)};
}

Screen screenForCapture(const QList<Screen>& screens, std::uint32_t displayID) {
    if (const auto screen = findScreen(screens, displayID))
        return *screen;
    Screen standIn;
    standIn.frame = QRectF(0, 0, 1920, 1080);
    standIn.backingScaleFactor = 2;
    return standIn;
}

double scaleForWindow(const QList<Screen>& screens, const QRectF& windowFrame) {
    for (const Screen& screen : screens)
        if (screen.frame.contains(windowFrame.center()))
            return screen.backingScaleFactor;
    return 2;
}

std::optional<PixelRect> cropForRegion(const QRectF& region, const QRectF& capture, int pictureWidth, int pictureHeight,
                                       int outputWidth, int outputHeight) {
    if (region.width() <= 0 || region.height() <= 0 || capture.width() <= 0 || capture.height() <= 0)
        return std::nullopt;
    const double scaleX = pictureWidth / capture.width();
    const double scaleY = pictureHeight / capture.height();
    const double left = (region.left() - capture.left()) * scaleX;
    // Points count up and rows count down: the region's upper edge is its greatest y.
    const double top = pictureHeight - (region.top() + region.height() - capture.top()) * scaleY;
    return PixelRect{int(std::lround(left)), int(std::lround(top)), outputWidth, outputHeight};
}

} // namespace keldra
