#pragma once

#include "project/CanvasBackground.h"
#include "project/CanvasSize.h"

#include <optional>

namespace keldra {

/// Distances from the canvas's sides to the recording, as fractions of the smaller canvas side.
struct CanvasInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
    friend bool operator==(const CanvasInsets&, const CanvasInsets&) = default;
};

/// The soft shadow that a clip casts on what lies below. Lengths are fractions of the smaller canvas side.
struct CanvasShadow {
    bool isEnabled = true;
    RGBAColor color;
    double opacity = 0.45;
    double blurRadius = 0.025;
    /// Downward when positive.
    double offsetY = 0.012;
    friend bool operator==(const CanvasShadow&, const CanvasShadow&) = default;
};

/// How the recording sits on its output frame. Default-made, it is the style of a project without one: the recording
/// alone, on black.
struct CanvasStyle {
    CanvasBackground background = RGBAColor{};
    CanvasInsets paddingFraction;
    ContentFit videoFit = ContentFit::fit;
    CanvasSizeSpec size = CanvasOriginalSize{};
    std::optional<CanvasShadow> shadow;
    /// Of the recording's smaller side, 0 to 0.5. Not set means square corners.
    std::optional<double> cornerRadiusFraction;
    friend bool operator==(const CanvasStyle&, const CanvasStyle&) = default;
};

/// The style of a project made for a source seen for the first time.
CanvasStyle freshCanvasStyle();

} // namespace keldra
