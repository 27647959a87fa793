#pragma once

#include "media/VideoComposition.h"
#include "project/CanvasStyle.h"
#include "project/ZoomBlock.h"

#include <QList>
#include <QTransform>

namespace keldra {

/// What is on screen in one stretch of the timeline, as the builder tells it to the compositor. Immutable once made.
struct EditorCompositorInstruction final : VideoInstruction {
    /// One clip's picture.
    struct Layer {
        /// The composition track that holds it.
        std::int32_t trackID = 0;
        /// Source pixels to canvas pixels, origin top left, y down.
        QTransform transform;
        /// 0 to 1.
        float opacity = 1;
        friend bool operator==(const Layer&, const Layer&) = default;
    };

    CanvasBackground background;
    CanvasShadow shadow;
    /// 0 to 0.5.
    double cornerRadiusFraction = 0;
    /// As sortedZoomBlocks() gives them.
    QList<ZoomBlock> zoomBlocks;
    /// Top first.
    QList<Layer> layers;
};

} // namespace keldra
