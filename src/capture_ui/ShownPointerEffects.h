#pragma once

#include "recording/PointerEffectsDrawing.h"
#include "recording/PointerEffectsSnapshot.h"
#include "ui_kit/ViewSpace.h"

#include <QPainterPath>
#include <QRectF>

#include <vector>

class QPainter;

namespace keldra {

/// The pointer's effects as they stand on an overlay, in desktop points.
class ShownPointerEffects {
public:
    /// Takes over what the snapshot shows, and answers which parts look different for it: none while nothing changes.
    std::vector<QRectF> update(const PointerEffectsSnapshot& snapshot);

    void paint(QPainter& painter, const ViewSpace& space) const;
    /// In solid colours and as mere lines, for windows that can only be cut out: what lies within a circle stays in
    /// sight.
    void paintOutlines(QPainter& painter, const ViewSpace& space) const;
    /// What those cover.
    QPainterPath outlines(const ViewSpace& space) const;

private:
    std::vector<PointerEffectCircle> m_circles;
};

} // namespace keldra
