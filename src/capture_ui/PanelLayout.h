#pragma once

#include "platform/Screens.h"
#include "recording/CameraOverlaySize.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

namespace keldra {

/// Sizes of the recorder's panels and where they stand around the control panel. Desktop points, y up.
namespace panelLayout {

inline constexpr QSizeF controlPanelSize{515, 76};
inline constexpr QSizeF settingsPanelSize{288, 780};
inline constexpr QSizeF closeConfirmationPanelSize{292, 116};
inline constexpr QSizeF selectionRequiredPanelSize{350, 132};
inline constexpr QSizeF noticePanelSize{420, 54};
inline constexpr QSizeF recordingTimerPanelSize{104, 28};
inline constexpr QSizeF postRecordingPanelSize{430, 58};

/// Offsets of lower left corners from that of the control panel.
inline constexpr QPointF settingsOffset{215, 84};
inline constexpr QPointF closeConfirmationOffset{111.5, 106};
inline constexpr QPointF selectionRequiredOffset{82.5, 88};
inline constexpr QPointF recordingTimerOffset{205.5, 84};
inline constexpr QPointF postRecordingOffset{42.5, 86};

/// With the two buttons below the picture of that height.
QSizeF webcamPanelSize(CameraOverlaySize size, int cameraPreviewHeight);

/// Where the control panel stands first: low in the middle of the main screen.
QPointF firstControlOrigin(const QList<Screen>& screens);
QPointF firstWebcamOrigin(QPointF controlOrigin);

/// The origin that keeps `frame` within the usable part of the screen it touches, else of the main screen. What is
/// larger than the screen keeps to its lower left corner.
QPointF clampToScreen(const QRectF& frame, const QList<Screen>& screens);

/// Where a companion of the control panel stands: at the offset; mirrored below the control panel where there is no
/// room above; never beside the screen.
QPointF companionOrigin(QPointF controlOrigin, QPointF offset, QSizeF size, const QList<Screen>& screens);

/// The settings panel; where the screen has no room for all of it, a part of it that scrolls, with a notice above it or
/// below the control panel.
QRectF settingsFrame(QPointF controlOrigin, const QList<Screen>& screens);

struct NoticeSurroundings {
    /// The settings panel, while it is presented.
    std::optional<QRectF> settings;
    bool isRecording = false;
};
QPointF noticeOrigin(QPointF controlOrigin, const NoticeSurroundings& surroundings, const QList<Screen>& screens);

/// Where the camera's picture is on its panel, and so in the recording.
QRectF bubbleFrame(const QRectF& webcamPanel, CameraOverlaySize size);

} // namespace panelLayout
} // namespace keldra
