#pragma once

#include "platform/OwnWindows.h"

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace keldra {

/// A small window of ours that floats above all others, as those see it who decide where it stands.
///
/// Space:   desktop points.
/// Threads: main.
class Panel : public QObject {
    Q_OBJECT

public:
    virtual QRectF frame() const = 0;
    /// Puts the lower left corner there.
    virtual void setOrigin(QPointF origin) = 0;
    /// The lower left corner stays where it is.
    virtual void setContentSize(QSizeF size) = 0;
    /// Shows the panel above the others; the keyboard stays where it is.
    virtual void orderFront() = 0;
    /// Shows the panel above the others and gives it the keyboard.
    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
    virtual void setSharingType(SharingType sharingType) = 0;

Q_SIGNALS:
    /// The frame has another place now, whoever moved it.
    void moved();
};

} // namespace keldra
