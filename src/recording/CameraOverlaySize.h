#pragma once

namespace keldra {

enum class CameraOverlaySize { small, large };

} // namespace keldra
