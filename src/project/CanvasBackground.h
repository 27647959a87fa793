#pragma once

#include "project/CanvasGradient.h"
#include "project/RGBAColor.h"

#include <QUrl>

#include <variant>

namespace keldra {

/// How a picture takes a rectangle of another aspect: wholly inside it, or wholly covering it.
enum class ContentFit { fit, fill };

/// A picture file behind the recording.
struct CanvasImageBackground {
    QUrl url;
    ContentFit fit = ContentFit::fill;
    /// Sigma of the blur, in pixels of the output.
    double blurRadius = 0;
    /// Shows where the picture does not, and alone when it cannot be read.
    RGBAColor fallbackColor;
    friend bool operator==(const CanvasImageBackground&, const CanvasImageBackground&) = default;
};

/// What lies behind the recording.
using CanvasBackground = std::variant<RGBAColor, CanvasGradient, CanvasImageBackground>;

} // namespace keldra
