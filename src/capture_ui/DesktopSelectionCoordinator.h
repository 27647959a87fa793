#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"
#include "base/Result.h"
#include "capture_ui/CursorEffectsOverlayCoordinator.h"
#include "capture_ui/SelectionCoordinator.h"
#include "capture_ui/SelectionInteraction.h"
#include "platform/Screens.h"
#include "platform/WindowList.h"
#include "recording/PointerEffectsMonitor.h"
#include "ui_kit/Overlay.h"

#include <memory>

namespace keldra {

class SelectionOverlayView;

/// Selects on an overlay that covers all screens there are at that moment.
class DesktopSelectionCoordinator final : public SelectionCoordinator {
public:
    /// References must outlive this object. `cursorEffects` is paused while the overlay, which draws the effects too,
    /// is up.
    struct Parts {
        std::shared_ptr<Screens> screens;
        std::shared_ptr<WindowList> windows;
        Overlays& overlays;
        const PointerEffectsMonitor& pointerEffects;
        CursorEffectsOverlayCoordinator& cursorEffects;
        Scheduler& scheduler;
        Executor& mainQueue;
    };
    explicit DesktopSelectionCoordinator(Parts parts);
    ~DesktopSelectionCoordinator() override;

    QCoro::Task<std::optional<CaptureSelection>> selectRegion() override;
    QCoro::Task<std::optional<CaptureSelection>> selectWindow() override;
    QCoro::Task<std::optional<CaptureSelection>> selectDisplay(std::uint32_t preferredDisplayID) override;

private:
    using Done = Completion<std::optional<CaptureSelection>>;

    QCoro::Task<std::optional<CaptureSelection>> select(CaptureMode mode, std::uint32_t preferredDisplayID);
    void begin(CaptureMode mode, std::uint32_t preferredDisplayID, Done done);
    void open(CaptureMode mode, std::uint32_t preferredDisplayID);
    /// In a later turn: the overlay is not destroyed by its own event.
    void finish(std::optional<CaptureSelection> selection);

    const Parts m_parts;
    /// Until windows below what has just been hidden have painted themselves.
    Timer m_settling;
    std::unique_ptr<SelectionOverlayView> m_view;
    Timer m_refreshing;
    Done m_done;
    std::shared_ptr<void> m_life = std::make_shared<bool>();
};

} // namespace keldra
