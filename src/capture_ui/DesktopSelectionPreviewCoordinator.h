#pragma once

#include "base/Executor.h"
#include "capture_ui/SelectionPreviewCoordinator.h"
#include "platform/EventMonitor.h"
#include "platform/Screens.h"
#include "platform/WindowList.h"
#include "ui_kit/Overlay.h"

#include <memory>
#include <optional>

namespace keldra {

class SelectionPreviewView;

/// Previews on an overlay that covers all screens there are when it is shown.
class DesktopSelectionPreviewCoordinator final : public SelectionPreviewCoordinator {
public:
    /// References must outlive this object.
    struct Parts {
        std::shared_ptr<Screens> screens;
        std::shared_ptr<WindowList> windows;
        std::shared_ptr<EventMonitor> events;
        Overlays& overlays;
        Executor& mainQueue;
    };
    explicit DesktopSelectionPreviewCoordinator(Parts parts);
    ~DesktopSelectionPreviewCoordinator() override;

    void show(const CaptureSelection& selection, std::function<void(QRectF)> onRegionChange,
              std::function<void()> onCancel) override;
    void hide() override;

private:
    void watchEscape(std::function<void()> onCancel);

    const Parts m_parts;
    /// Holds alive what is shown while it calls out.
    std::shared_ptr<SelectionPreviewView> m_view;
    EventMonitor::Watch m_cancelKeyWatch;
};

} // namespace keldra
