#pragma once

#include "project/RGBAColor.h"

#include <QList>
#include <QString>

namespace keldra {

/// A blend of two colours over the whole canvas.
struct CanvasGradient {
    enum class Kind { linear, radial };

    Kind kind = Kind::linear;
    RGBAColor startColor;
    RGBAColor endColor;
    /// Direction of a linear gradient, counter-clockwise with y up: 0 starts on the left, 90 at the bottom.
    double angleDegrees = 0;
    /// Radius of a radial gradient's solid middle, as a fraction of the whole radius.
    double centerSize = 0;
    friend bool operator==(const CanvasGradient&, const CanvasGradient&) = default;
};

/// A gradient that the program offers. A project stores the gradient's values, never the preset.
struct CanvasGradientPreset {
    QString id;
    QString displayName;
    CanvasGradient gradient;
    friend bool operator==(const CanvasGradientPreset&, const CanvasGradientPreset&) = default;
};

/// All presets, in the order offered.
const QList<CanvasGradientPreset>& gradientPresets();
/// What a fresh project lies on: "ocean", or the first preset when there is no such.
const CanvasGradient& defaultGradient();

} // namespace keldra
