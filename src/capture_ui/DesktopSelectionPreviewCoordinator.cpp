#include "capture_ui/DesktopSelectionPreviewCoordinator.h"

#include "capture_ui/SelectionPreviewView.h"
#include "platform/SelectedRect.h"
#include "ui_kit/DesktopCoordinates.h"

#include <utility>
#include <variant>

namespace keldra {

DesktopSelectionPreviewCoordinator::DesktopSelectionPreviewCoordinator(Parts parts) : m_parts(std::move(parts)) {}

DesktopSelectionPreviewCoordinator::~DesktopSelectionPreviewCoordinator() = default;

void DesktopSelectionPreviewCoordinator::show(const CaptureSelection& selection,
                                              std::function<void(QRectF)> onRegionChange,
                                              std::function<void()> onCancel) {
    const QList<Screen> screens = m_parts.screens->screens();
    const std::optional<QRectF> rect = selectedRect(selection, screens, *m_parts.windows);
    if (!rect || screens.isEmpty())
        return hide();
    const auto mode = std::holds_alternative<RegionSelection>(selection) ? SelectionPreviewView::Mode::editable
                                                                         : SelectionPreviewView::Mode::passive;
    const QRectF desktop = unionOfFrames(screens);
    // What they do may end the view, which is in an event of its own then.
    SelectionPreviewView::Events events;
    events.regionChanged = [this, onRegionChange](QRectF region) {
        m_parts.mainQueue.post([held = m_view] {});
        onRegionChange(region);
    };
    events.desktopChanged = [this, selection, onRegionChange, onCancel] {
        m_parts.mainQueue.post([held = m_view] {});
        show(selection, onRegionChange, onCancel);
    };
    if (m_view && m_view->fits(m_parts.overlays, desktop, mode)) {
        // The same window, so that nothing flickers at the end of each drag.
        m_view->replace(*rect, std::move(events));
    } else {
        m_view = std::make_shared<SelectionPreviewView>(*rect, desktop, mode, std::move(events));
        m_view->open(m_parts.overlays);
    }
    watchEscape(std::move(onCancel));
}

void DesktopSelectionPreviewCoordinator::watchEscape(std::function<void()> onCancel) {
    if (!m_parts.events)
        return;
    m_cancelKeyWatch = m_parts.events->watch(WindowEvent::Kind::keyDown,
                                             [onCancel, &mainQueue = m_parts.mainQueue](const WindowEvent& event) {
                                                 if (event.key != Qt::Key_Escape)
                                                     return false;
                                                 mainQueue.post(onCancel);
                                                 return true;
                                             });
}

void DesktopSelectionPreviewCoordinator::hide() {
    m_cancelKeyWatch.reset();
    m_view.reset();
}

} // namespace keldra
