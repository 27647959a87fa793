#include "cli/RecordDevices.h"

#include "platform/SelectedRect.h"

#include <algorithm>

namespace keldra {
namespace {

/// Between the bubble and the edges, desktop points.
constexpr double bubbleMargin = 24;

Error noDevice(const QString& words) {
    return Error{"Record", 3, words.toStdString(), {}};
}

QString wordFor(CaptureDeviceKind kind) {
    return kind == CaptureDeviceKind::camera ? QStringLiteral("camera") : QStringLiteral("microphone");
}

bool isNamed(const CaptureDeviceOption& device, const QString& word) {
    return device.id == word || device.name.compare(word, Qt::CaseInsensitive) == 0;
}

} // namespace

Result<CaptureDeviceOption> deviceFor(const Platform& platform, CaptureDeviceKind kind, const QString& word) {
    const QString what = wordFor(kind);
    const auto& known = platform.devices;
    if (!known || known->authorization(kind) != CaptureAuthorization::authorized)
        return fail(noDevice(QStringLiteral("--%1 needs PipeWire, which does not answer in this session: start it, or "
                                            "leave --%1 out")
                                 .arg(what)));
    const QList<CaptureDeviceOption> devices = known->devices(kind);
    if (devices.isEmpty())
        return fail(noDevice(QStringLiteral("there is no %1: connect one, or leave --%1 out").arg(what)));
    if (word.isEmpty())
        return *chooseDevice(devices, {}, known->defaultDeviceID(kind));
    const auto found =
        std::find_if(devices.begin(), devices.end(), [&](const auto& each) { return isNamed(each, word); });
    if (found != devices.end())
        return *found;
    QStringList there;
    for (const CaptureDeviceOption& each : devices)
        there += QStringLiteral("%1 (%2)").arg(each.id, each.name);
    return fail(noDevice(
        QStringLiteral("there is no %1 \"%2\"; there is: %3").arg(what, word, there.join(QStringLiteral(", ")))));
}

CameraOverlaySnapshot bubbleFor(const CaptureSelection& selection, const Screens& screens, const WindowList& windows) {
    const QRectF source = selectedRect(selection, screens.screens(), windows).value_or(QRectF());
    const double side = cameraOverlaySide(CameraOverlaySize::large);
    CameraOverlaySnapshot bubble;
    bubble.isVisible = true;
    // Points count up: the lower edge is the smaller y.
    bubble.frame =
        QRectF(source.left() + source.width() - bubbleMargin - side, source.top() + bubbleMargin, side, side);
    bubble.shape = CameraOverlayShape::circle;
    bubble.cornerRadius = cameraOverlayCornerRadius(bubble.shape, side);
    return bubble;
}

} // namespace keldra
