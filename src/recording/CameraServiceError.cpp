#include "recording/CameraServiceError.h"

namespace keldra {
namespace {

const char* words(CameraServiceError error) {
    switch (error) {
    case CameraServiceError::noCameraAvailable:
        return "No camera is available.";
    case CameraServiceError::couldNotAddCameraInput:
        return "Could not connect the camera.";
    case CameraServiceError::couldNotAddVideoOutput:
        return "Could not prepare the camera image.";
    }
    return "";
}

} // namespace

Error makeError(CameraServiceError error) {
    return Error{"CameraServiceError", int(error), words(error), {}};
}

} // namespace keldra
