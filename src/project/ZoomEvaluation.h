#pragma once

#include "project/ZoomBlock.h"

#include <QList>
#include <QRectF>
#include <QTransform>

namespace keldra {

/// Below this scale a picture counts as not zoomed.
constexpr double zoomThreshold = 1.0001;

/// How far, and around which point, the recording is magnified.
struct ZoomState {
    double scale = 1;
    ZoomFocus focus;
    friend bool operator==(const ZoomState&, const ZoomState&) = default;
};

/// The zoom at `time` (timeline seconds). `blocks` come from sortedZoomBlocks(); the first that covers the time counts.
/// The scale eases in and out by smoothstep, the focus stays.
ZoomState zoomState(const QList<ZoomBlock>& blocks, double time);

/// Whether the zoom may change between `start` and `end` (timeline seconds, both included).
bool zoomRampActive(const QList<ZoomBlock>& blocks, double start, double end);

/// Magnifies what lies in `rect` around the focus. Canvas pixels, y down.
QTransform zoomTransform(double scale, const ZoomFocus& focus, const QRectF& rect);

} // namespace keldra
