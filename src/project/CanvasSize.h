#pragma once

#include <QSize>

#include <variant>

namespace keldra {

enum class CanvasPreset { landscape16x9, portrait9x16, square1x1, portrait4x5 };

/// Pixels of a preset's canvas.
QSize presetSize(CanvasPreset preset);

/// A size of the user's own, in pixels; unbounded until evenDimension() takes it.
struct CanvasCustomSize {
    qint64 width = 0;
    qint64 height = 0;
    friend bool operator==(const CanvasCustomSize&, const CanvasCustomSize&) = default;
};

/// The size of the recording itself.
struct CanvasOriginalSize {
    friend bool operator==(const CanvasOriginalSize&, const CanvasOriginalSize&) = default;
};

using CanvasSizeSpec = std::variant<CanvasPreset, CanvasCustomSize, CanvasOriginalSize>;

} // namespace keldra
