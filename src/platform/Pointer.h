#pragma once

#include <QPointF>

namespace keldra {

/// The mouse pointer. Main thread.
class Pointer {
public:
    virtual ~Pointer() = default;
    /// Desktop points; the last known place when the desktop does not answer.
    virtual QPointF location() = 0;
    /// Which buttons are down, or were pressed since the last call however briefly: bit 0 is the first button. What a
    /// scroll wheel reports as buttons is none.
    [[nodiscard]] virtual unsigned takePressedButtons() = 0;
};

} // namespace keldra
