#include "project/CanvasSize.h"

namespace keldra {

QSize presetSize(CanvasPreset preset) {
    switch (preset) {
    case CanvasPreset::landscape16x9:
        return {1920, 1080};
    case CanvasPreset::portrait9x16:
        return {1080, 1920};
    case CanvasPreset::square1x1:
        return {1080, 1080};
    case CanvasPreset::portrait4x5:
        return {1080, 1350};
    }
    return {};
}

} // namespace keldra
