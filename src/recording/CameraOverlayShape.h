#pragma once

namespace keldra {

enum class CameraOverlayShape { circle, roundedSquare };

} // namespace keldra
