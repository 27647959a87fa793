#pragma once

#include "async/Scheduler.h"
#include "capture_ui/CursorEffectsOverlayCoordinator.h"
#include "platform/Screens.h"
#include "recording/PointerEffectsMonitor.h"
#include "ui_kit/Overlay.h"

#include <memory>

namespace keldra {

class CursorEffectsOverlayView;

/// Draws on an overlay that covers all screens and lets clicks through; it follows monitors that come and go.
class DesktopCursorEffectsOverlayCoordinator final : public CursorEffectsOverlayCoordinator {
public:
    /// References must outlive this object.
    struct Parts {
        std::shared_ptr<Screens> screens;
        Overlays& overlays;
        const PointerEffectsMonitor& pointerEffects;
        Scheduler& scheduler;
    };
    explicit DesktopCursorEffectsOverlayCoordinator(Parts parts);
    ~DesktopCursorEffectsOverlayCoordinator() override;

    void show() override;
    void drop() override;
    void setPaused(bool isPaused) override;

private:
    void cover();

    const Parts m_parts;
    bool m_isPaused = false;
    std::unique_ptr<CursorEffectsOverlayView> m_view;
    Timer m_refreshing;
    Timer m_covering;
};

} // namespace keldra
