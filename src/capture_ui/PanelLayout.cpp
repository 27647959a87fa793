#include "capture_ui/PanelLayout.h"

#include "recording/CameraOverlayState.h"

#include <algorithm>

namespace keldra::panelLayout {
namespace {

constexpr QPointF originWithoutScreens{380, 80};
constexpr double firstHeight = 36;
/// Between panels that stand on each other.
constexpr double gap = 8;
constexpr double webcamGap = 14;
/// Of the camera panel, below the picture.
constexpr double webcamControlsHeight = 52;
constexpr double bubbleTopMargin = 2;
/// What a settings panel needs to be of use.
constexpr double leastSettingsHeight = 320;

double clampSpan(double low, double length, double least, double most) {
    return std::min(std::max(least, low), std::max(least, most - length));
}

/// The usable part of the screen that `frame` touches, else of the main one.
std::optional<QRectF> usablePart(const QRectF& frame, const QList<Screen>& screens) {
    if (screens.isEmpty())
        return std::nullopt;
    const auto touched = std::find_if(screens.begin(), screens.end(),
                                      [&](const Screen& screen) { return screen.visibleFrame.intersects(frame); });
    return touched != screens.end() ? touched->visibleFrame : screens.first().visibleFrame;
}

QPointF clampTo(const QRectF& frame, const QRectF& usable) {
    return {clampSpan(frame.x(), frame.width(), usable.left(), usable.right()),
            clampSpan(frame.y(), frame.height(), usable.top(), usable.bottom())};
}

std::optional<QRectF> usablePartAround(QPointF controlOrigin, const QList<Screen>& screens) {
    return usablePart({controlOrigin, controlPanelSize}, screens);
}

} // namespace

QSizeF webcamPanelSize(CameraOverlaySize size, int cameraPreviewHeight) {
    return {size == CameraOverlaySize::large ? 292.0 : 241.0, cameraPreviewHeight + webcamControlsHeight};
}

QPointF firstControlOrigin(const QList<Screen>& screens) {
    if (screens.isEmpty())
        return originWithoutScreens;
    const QRectF& usable = screens.first().visibleFrame;
    return {usable.center().x() - controlPanelSize.width() / 2, usable.top() + firstHeight};
}

QPointF firstWebcamOrigin(QPointF controlOrigin) {
    return controlOrigin + QPointF(controlPanelSize.width() + webcamGap, 0);
}

QPointF clampToScreen(const QRectF& frame, const QList<Screen>& screens) {
    const std::optional<QRectF> usable = usablePart(frame, screens);
    return usable ? clampTo(frame, *usable) : frame.topLeft();
}

QPointF companionOrigin(QPointF controlOrigin, QPointF offset, QSizeF size, const QList<Screen>& screens) {
    QRectF frame(controlOrigin + offset, size);
    const std::optional<QRectF> usable = usablePartAround(controlOrigin, screens);
    if (!usable || usable->contains(frame))
        return frame.topLeft();
    if (frame.bottom() > usable->bottom())
        frame.moveTop(controlOrigin.y() - (offset.y() - controlPanelSize.height()) - size.height());
    return clampTo(frame, *usable);
}

QRectF settingsFrame(QPointF controlOrigin, const QList<Screen>& screens) {
    const QRectF whole(controlOrigin + settingsOffset, settingsPanelSize);
    const std::optional<QRectF> usable = usablePartAround(controlOrigin, screens);
    if (!usable || usable->contains(whole))
        return whole;
    const double roomAbove = usable->bottom() - whole.top();
    const double roomBelow = controlOrigin.y() - gap - usable->top();
    const double noticeRoom = noticePanelSize.height() + gap;
    QRectF frame = whole;
    if (roomAbove >= whole.height() || roomAbove >= leastSettingsHeight + noticeRoom || roomAbove >= roomBelow) {
        if (roomAbove < whole.height())
            frame.setHeight(std::clamp(roomAbove - noticeRoom, leastSettingsHeight, whole.height()));
    } else {
        frame.setHeight(std::clamp(roomBelow, leastSettingsHeight, whole.height()));
        frame.moveTop(controlOrigin.y() - gap - frame.height());
    }
    frame.setHeight(std::min(frame.height(), usable->height()));
    frame.moveTopLeft(clampTo(frame, *usable));
    return frame;
}

QPointF noticeOrigin(QPointF controlOrigin, const NoticeSurroundings& surroundings, const QList<Screen>& screens) {
    // Each is centred on the control panel, or on the settings panel.
    QPointF offset(47.5, 84);
    if (surroundings.settings) {
        const QRectF& settings = *surroundings.settings;
        if (settings.top() > controlOrigin.y())
            offset = QPointF(149, settings.bottom() + gap - controlOrigin.y());
    } else if (surroundings.isRecording) {
        offset = QPointF(47.5, 120);
    }
    const QPointF origin = controlOrigin + offset;
    const std::optional<QRectF> usable = usablePartAround(controlOrigin, screens);
    if (surroundings.settings && usable)
        return clampTo({origin, noticePanelSize}, *usable);
    return companionOrigin(controlOrigin, offset, noticePanelSize, screens);
}

QRectF bubbleFrame(const QRectF& webcamPanel, CameraOverlaySize size) {
    const double side = cameraOverlaySide(size);
    return {webcamPanel.center().x() - side / 2, webcamPanel.bottom() - side - bubbleTopMargin, side, side};
}

} // namespace keldra::panelLayout
