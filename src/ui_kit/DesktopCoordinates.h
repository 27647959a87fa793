#pragma once

#include "platform/Screens.h"

#include <QPoint>
#include <QRect>
#include <QRectF>

#include <vector>

namespace keldra {

/// Desktop points (origin bottom left of the primary screen, y up) <-> Qt's geometry <-> root pixels, for one layout of
/// monitors. A root pixel is points times one factor for the whole desktop; Qt keeps each screen's upper left corner in
/// root pixels and divides only the offset from it by the factor, so its rectangles mean something only together with
/// the screen that they lie on.
class DesktopCoordinates {
public:
    struct Monitor {
        /// Root pixels.
        QRect root;
        /// What QScreen::geometry() says.
        QRect qt;
        bool isPrimary = false;
        friend bool operator==(const Monitor&, const Monitor&) = default;
    };

    /// `factor`: pixels per point.
    DesktopCoordinates(std::vector<Monitor> monitors, double factor);
    /// The layout as Qt sees it now. Main thread.
    static DesktopCoordinates current();

    double factor() const { return m_factor; }

    /// For QWindow::setGeometry(), relative to the screen that holds its centre, else the nearest one.
    QRect toQt(const QRectF& points) const;
    /// From QWindow::geometry().
    QRectF toPoints(const QRect& windowGeometry) const;
    /// From a global position of an event.
    QPointF toPoints(const QPointF& globalPosition) const;

    /// Edges go to the nearest pixel, so touching rectangles stay touching.
    QRect toRoot(const QRectF& points) const;

private:
    QPointF originInRoot() const;
    const Monitor* nearest(const QPointF& place, QRect Monitor::*space) const;

    std::vector<Monitor> m_monitors;
    double m_factor;
};

/// The smallest rectangle that holds all of them; empty when there are none.
QRectF unionOfFrames(const QList<Screen>& screens);

} // namespace keldra
