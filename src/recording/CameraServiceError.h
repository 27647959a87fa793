#pragma once

#include "base/Error.h"

namespace keldra {

/// Why a camera could not be used, where the desktop has no words of its own.
enum class CameraServiceError { noCameraAvailable, couldNotAddCameraInput, couldNotAddVideoOutput };

/// Domain "CameraServiceError", with the words a user reads.
Error makeError(CameraServiceError error);

} // namespace keldra
