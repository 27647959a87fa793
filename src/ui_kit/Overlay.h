#pragma once

#include "ui_kit/ViewSpace.h"

#include <QPainterPath>
#include <QRectF>
#include <QString>

#include <memory>

class QPainter;

namespace keldra {

/// What an overlay shows and hears. Places are desktop points; of the mouse, the first button alone counts.
class OverlayView {
public:
    virtual ~OverlayView() = default;

    /// Paints on clear ground, in the coordinates of `space`; the painter is clipped to what has to be painted.
    virtual void paint(QPainter& painter, const ViewSpace& space) = 0;
    /// What of the overlay is there where it can only be cut out: OverlayOptions::Substitute::shape.
    virtual QPainterPath shape(const ViewSpace&) const { return {}; }

    virtual void mousePressed(QPointF) {}
    /// Also while the button is down.
    virtual void mouseMoved(QPointF) {}
    virtual void mouseReleased(QPointF) {}
    /// With a Qt::Key.
    virtual void keyPressed(int) {}
    /// A monitor came, went or moved: the overlay may no longer cover what it should.
    virtual void desktopChanged() {}
};

struct OverlayOptions {
    enum class Level {
        /// Above whatever there is.
        aboveAll,
        /// Above the windows of other programs, below our panels.
        belowPanels,
    };
    /// What the overlay is where nothing shines through windows, for want of a compositing manager.
    enum class Substitute {
        /// It lies on a picture of the screen from before it was shown.
        screenshot,
        /// Only the view's shape is there.
        shape,
    };
    /// As OwnWindows has it.
    QString identifier;
    /// Desktop points.
    QRectF frame;
    Level level = Level::aboveAll;
    Substitute substitute = Substitute::shape;
    bool letsClicksThrough = false;
    /// Holds the keyboard while it is shown.
    bool takesKeyboard = false;
    friend bool operator==(const OverlayOptions&, const OverlayOptions&) = default;
};

/// A window that is painted in C++, over the whole desktop or a part of it; recordings may see it. Destroying it takes
/// it off the screen. Main thread.
class Overlay {
public:
    virtual ~Overlay() = default;
    virtual void orderFront() = 0;
    /// That part (desktop points) looks different now; the shape is asked for again.
    virtual void repaint(const QRectF& part) = 0;
    virtual void setCursor(Qt::CursorShape cursor) = 0;
};

/// Makes overlays. Main thread.
class Overlays {
public:
    virtual ~Overlays() = default;
    /// Whether windows can let what is below shine through at present.
    virtual bool areTranslucent() const = 0;
    /// Whether overlays can lie over the desktop. Otherwise each is a window among others, as large as it was asked
    /// for, wherever the desktop puts it.
    virtual bool canCover() const = 0;
    /// `view` must outlive the overlay.
    virtual std::unique_ptr<Overlay> make(const OverlayOptions& options, OverlayView& view) = 0;
};

} // namespace keldra
