#include "capture_ui/PanelLayout.h"
#include "capture_ui/WindowCoordinator.h"

#include <QPointer>

#include <algorithm>

namespace keldra {
namespace {

bool allowsPreview(RecordingState state) {
    return state == RecordingState::idle || state == RecordingState::requestingPermission ||
           state == RecordingState::failed;
}

/// Shows a panel that asks for an answer, or takes it away.
void present(Panel& panel, bool isPresented) {
    if (isPresented)
        panel.makeKeyAndOrderFront();
    else
        panel.orderOut();
}

} // namespace

void WindowCoordinator::recordingStateChanged(RecordingState state) {
    updateSharingTypes(state);
    updateSelectionPreview(state, m_model.currentSelection());
    updateControlPanel(state);
    updateWebcamPanel();
    updateSettingsPanel(state);
    updateCursorEffectsOverlay();
    updateRecordingTimerPanel(state);
    updateNoticePanel();
}

/// The camera's panel is what a recording is to see, the timer what it never may; the others keep out of recordings.
void WindowCoordinator::updateSharingTypes(RecordingState state) {
    const bool isRecording = state == RecordingState::recording || state == RecordingState::stopping;
    const SharingType sharing = isRecording ? SharingType::none : SharingType::readOnly;
    const RecorderPanels& panels = m_parts.panels;
    for (Panel* panel : {panels.control.get(), panels.settings.get(), panels.closeConfirmation.get(),
                         panels.selectionRequired.get(), panels.notice.get(), panels.postRecording.get()})
        panel->setSharingType(sharing);
    if (m_editor)
        m_editor->setSharingType(sharing);
    panels.webcam->setSharingType(SharingType::readOnly);
    panels.recordingTimer->setSharingType(SharingType::none);
}

void WindowCoordinator::updateControlPanel(RecordingState state) {
    Panel& control = *m_parts.panels.control;
    if (m_isEditorPresented || state == RecordingState::countdown) {
        control.orderOut();
        m_parts.panels.settings->orderOut();
        return;
    }
    keepControlPanelOnScreen();
    control.orderFront();
}

/// The screen that it stood on may be gone.
void WindowCoordinator::keepControlPanelOnScreen() {
    const QList<Screen> all = screens();
    const QRectF frame = m_parts.panels.control->frame();
    if (std::none_of(all.begin(), all.end(),
                     [&](const Screen& screen) { return screen.visibleFrame.intersects(frame); }))
        m_parts.panels.control->setOrigin(panelLayout::clampToScreen(frame, all));
}

void WindowCoordinator::screensChanged() {
    // Whole ones: what is left of a panel may be too little to be found.
    for (Panel* panel : {m_parts.panels.control.get(), m_parts.panels.webcam.get()})
        panel->setOrigin(panelLayout::clampToScreen(panel->frame(), screens()));
    syncCameraOverlayState();
    layoutPanels();
}

void WindowCoordinator::updateWebcamPanel() {
    Panel& webcam = *m_parts.panels.webcam;
    if (m_isEditorPresented) {
        webcam.orderOut();
        syncCameraOverlayState();
        return;
    }
    const QSizeF size = panelLayout::webcamPanelSize(m_model.cameraOverlaySize(), m_model.cameraPreviewHeight());
    if (webcam.frame().size() != size)
        webcam.setContentSize(size);
    webcam.setOrigin(panelLayout::clampToScreen(webcam.frame(), screens()));
    const RecordingState state = m_model.recordingState();
    if (m_model.cameraService()->isRunning() || state == RecordingState::recording || state == RecordingState::stopping)
        webcam.orderFront();
    else
        webcam.orderOut();
    syncCameraOverlayState();
}

void WindowCoordinator::syncCameraOverlayState() {
    const Panel& webcam = *m_parts.panels.webcam;
    const CameraOverlaySize size = m_model.cameraOverlaySize();
    const CameraOverlayShape shape = m_model.cameraOverlayShape();
    m_model.cameraOverlayState()->setSnapshot({m_model.cameraService()->isRunning() && webcam.isVisible(),
                                               panelLayout::bubbleFrame(webcam.frame(), size), shape,
                                               cameraOverlayCornerRadius(shape, cameraOverlaySide(size))});
}

void WindowCoordinator::updateSettingsPanel(RecordingState state) {
    Panel& settings = *m_parts.panels.settings;
    if (m_isEditorPresented || !m_model.isSettingsPresented() || state == RecordingState::countdown) {
        settings.orderOut();
        m_settingsDismissMonitor.reset();
        return;
    }
    const QRectF frame = panelLayout::settingsFrame(origin(), screens());
    settings.setContentSize(frame.size());
    settings.setOrigin(frame.topLeft());
    settings.makeKeyAndOrderFront();
    watchForDismissal();
}

void WindowCoordinator::settingsPresentedChanged() {
    updateSettingsPanel(m_model.recordingState());
    updateNoticePanel();
}

void WindowCoordinator::watchForDismissal() {
    if (m_settingsDismissMonitor || !m_parts.events)
        return;
    m_settingsDismissMonitor = m_parts.events->watch(
        WindowEvent::Kind::mouseUp, [alive = QPointer<WindowCoordinator>(this)](const WindowEvent& event) {
            // A turn later, so that the click has its effect first.
            if (alive && alive->m_model.isSettingsPresented() && event.window != QLatin1String(settingsPanelIdentifier))
                alive->later([self = alive.data()] { self->m_model.setIsSettingsPresented(false); });
            return false;
        });
}

void WindowCoordinator::updateSelectionRequiredPanel() {
    const bool isPresented = !m_isEditorPresented && m_model.isSelectionRequiredPresented();
    Panel& panel = *m_parts.panels.selectionRequired;
    if (isPresented)
        placeCompanion(panel, panelLayout::selectionRequiredOffset, panelLayout::selectionRequiredPanelSize);
    present(panel, isPresented);
}

void WindowCoordinator::updateCloseConfirmationPanel() {
    const bool isPresented = !m_isEditorPresented && m_model.isCloseConfirmationPresented();
    Panel& panel = *m_parts.panels.closeConfirmation;
    if (isPresented)
        placeCompanion(panel, panelLayout::closeConfirmationOffset, panelLayout::closeConfirmationPanelSize);
    present(panel, isPresented);
}

void WindowCoordinator::updatePostRecordingPanel() {
    const bool isPresented = !m_isEditorPresented && !m_model.lastSavedURL().isEmpty();
    Panel& panel = *m_parts.panels.postRecording;
    if (isPresented)
        placeCompanion(panel, panelLayout::postRecordingOffset, panelLayout::postRecordingPanelSize);
    present(panel, isPresented);
}

void WindowCoordinator::updateNoticePanel() {
    Panel& panel = *m_parts.panels.notice;
    if (m_isEditorPresented || !m_model.notice()) {
        panel.orderOut();
        return;
    }
    panel.setOrigin(noticeOrigin());
    panel.orderFront();
}

void WindowCoordinator::updateRecordingTimerPanel(RecordingState state) {
    Panel& panel = *m_parts.panels.recordingTimer;
    if (m_isEditorPresented || state != RecordingState::recording) {
        panel.orderOut();
        return;
    }
    placeCompanion(panel, panelLayout::recordingTimerOffset, panelLayout::recordingTimerPanelSize);
    panel.orderFront();
}

void WindowCoordinator::updateCursorEffectsOverlay() {
    if (!m_isEditorPresented && (m_model.showClickIndicators() || m_model.showCursorHighlight()))
        m_parts.cursorEffectsOverlay->show();
    else
        m_parts.cursorEffectsOverlay->drop();
}

void WindowCoordinator::updateSelectionPreview(RecordingState state, const std::optional<CaptureSelection>& selection) {
    if (m_isEditorPresented || !allowsPreview(state) || !selection) {
        m_parts.selectionPreview->hide();
        return;
    }
    const QPointer<AppModel> model(&m_model);
    m_parts.selectionPreview->show(
        *selection,
        [model](const QRectF& region) {
            if (model)
                model->updateRegionSelection(region);
        },
        [model] {
            if (!model)
                return;
            model->setCurrentSelection(std::nullopt);
            model->setErrorMessage({});
        });
    updateControlPanel(state);
    updateWebcamPanel();
    // Its Escape is heard; and some window managers (i3) lift only what gets the keyboard above what has just come.
    focusControlPanel();
}

void WindowCoordinator::layoutPanels() {
    if (m_model.isSettingsPresented())
        m_model.setIsSettingsPresented(false);
    placeCompanions();
}

void WindowCoordinator::placeCompanions() {
    const RecorderPanels& panels = m_parts.panels;
    if (m_model.isCloseConfirmationPresented())
        placeCompanion(*panels.closeConfirmation, panelLayout::closeConfirmationOffset,
                       panelLayout::closeConfirmationPanelSize);
    if (m_model.isSelectionRequiredPresented())
        placeCompanion(*panels.selectionRequired, panelLayout::selectionRequiredOffset,
                       panelLayout::selectionRequiredPanelSize);
    if (m_model.notice())
        panels.notice->setOrigin(noticeOrigin());
    if (m_model.recordingState() == RecordingState::recording)
        placeCompanion(*panels.recordingTimer, panelLayout::recordingTimerOffset, panelLayout::recordingTimerPanelSize);
    if (!m_model.lastSavedURL().isEmpty())
        placeCompanion(*panels.postRecording, panelLayout::postRecordingOffset, panelLayout::postRecordingPanelSize);
}

QList<Panel*> WindowCoordinator::allPanels() const {
    const RecorderPanels& panels = m_parts.panels;
    return {panels.control.get(),           panels.webcam.get(),
            panels.settings.get(),          panels.closeConfirmation.get(),
            panels.selectionRequired.get(), panels.notice.get(),
            panels.recordingTimer.get(),    panels.postRecording.get()};
}

QPointF WindowCoordinator::origin() const {
    const QRectF frame = m_parts.panels.control->frame();
    return frame.isEmpty() ? panelLayout::firstControlOrigin(screens()) : frame.topLeft();
}

QPointF WindowCoordinator::noticeOrigin() const {
    const QList<Screen> all = screens();
    panelLayout::NoticeSurroundings surroundings{std::nullopt, m_model.recordingState() == RecordingState::recording};
    if (m_model.isSettingsPresented())
        surroundings.settings = panelLayout::settingsFrame(origin(), all);
    return panelLayout::noticeOrigin(origin(), surroundings, all);
}

void WindowCoordinator::placeCompanion(Panel& panel, QPointF offset, QSizeF size) {
    panel.setOrigin(panelLayout::companionOrigin(origin(), offset, size, screens()));
}

} // namespace keldra
