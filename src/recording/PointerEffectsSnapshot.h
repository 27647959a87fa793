#pragma once

#include <QPointF>

#include <optional>
#include <vector>

namespace keldra {

/// One ripple of a click at one moment.
struct PointerRippleSnapshot {
    /// Desktop points.
    QPointF location;
    /// 0 at the click, 1 at its end.
    double progress = 0;
    friend bool operator==(const PointerRippleSnapshot&, const PointerRippleSnapshot&) = default;
};

/// All that is drawn around the pointer at one moment.
struct PointerEffectsSnapshot {
    bool showsCursorHighlight = false;
    bool showsClickIndicators = false;
    double clickIndicatorIntensity = 1;
    double cursorHighlightIntensity = 0.65;
    /// Diameter in points.
    double cursorHighlightSize = 48;
    /// Desktop points; none while the pointer is over a surface that recordings cannot see.
    std::optional<QPointF> cursorLocation;
    /// Oldest first; empty unless click indicators are shown.
    std::vector<PointerRippleSnapshot> clickRipples;
    bool isClickPressActive = false;
    friend bool operator==(const PointerEffectsSnapshot&, const PointerEffectsSnapshot&) = default;
};

} // namespace keldra
