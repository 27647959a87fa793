#pragma once

namespace keldra {

/// Shows the pointer's effects live on the screen. Main thread.
class CursorEffectsOverlayCoordinator {
public:
    virtual ~CursorEffectsOverlayCoordinator() = default;
    /// A second call does nothing.
    virtual void show() = 0;
    virtual void drop() = 0;
    /// Shows nothing meanwhile, because something else draws the effects.
    virtual void setPaused(bool isPaused) = 0;
};

} // namespace keldra
