#include "recording/CameraServiceError.h"

#include <QtGlobal>

namespace keldra {
namespace {

const char* words(CameraServiceError error) {
    switch (error) {
    case CameraServiceError::noCameraAvailable:
        return QT_TRANSLATE_NOOP("Messages", "No camera is available.");
    case CameraServiceError::couldNotAddCameraInput:
        return QT_TRANSLATE_NOOP("Messages", "Could not connect the camera.");
    case CameraServiceError::couldNotAddVideoOutput:
        return QT_TRANSLATE_NOOP("Messages", "Could not prepare the camera image.");
    }
    return "";
}

} // namespace

Error makeError(CameraServiceError error) {
    return Error{"CameraServiceError", int(error), words(error), {}};
}

} // namespace keldra
