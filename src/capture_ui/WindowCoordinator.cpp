#include "capture_ui/WindowCoordinator.h"

#include "async/AwaitCompletion.h"
#include "base/Log.h"
#include "capture_ui/PanelLayout.h"

#include <QPointer>

namespace keldra {

WindowCoordinator::WindowCoordinator(AppModel& model, Parts parts) : m_model(model), m_parts(std::move(parts)) {
    const RecorderPanels& panels = m_parts.panels;
    panels.control->setContentSize(panelLayout::controlPanelSize);
    panels.control->setOrigin(panelLayout::firstControlOrigin(screens()));
    panels.webcam->setOrigin(panelLayout::firstWebcamOrigin(origin()));
    panels.settings->setContentSize(panelLayout::settingsPanelSize);
    panels.closeConfirmation->setContentSize(panelLayout::closeConfirmationPanelSize);
    panels.selectionRequired->setContentSize(panelLayout::selectionRequiredPanelSize);
    panels.notice->setContentSize(panelLayout::noticePanelSize);
    panels.recordingTimer->setContentSize(panelLayout::recordingTimerPanelSize);
    panels.postRecording->setContentSize(panelLayout::postRecordingPanelSize);
    lendWindows();
    observePanels();
    observeCamera();
    observe();
}

WindowCoordinator::~WindowCoordinator() = default;

void WindowCoordinator::lendWindows() {
    const auto nothing = []() -> QCoro::Task<std::optional<CaptureSelection>> { co_return std::nullopt; };
    const auto noCountdown = []() -> QCoro::Task<> { co_return; };
    const QPointer<WindowCoordinator> alive(this);
    m_model.setWindows({[alive, nothing](CaptureMode mode, std::uint32_t displayID) {
                            return alive ? alive->chooseSelection(mode, displayID) : nothing();
                        },
                        [alive, noCountdown] { return alive ? alive->runCountdown() : noCountdown(); },
                        [alive](const QUrl& movie, bool hasLiveClickTrack) {
                            if (alive)
                                alive->openEditor(movie, hasLiveClickTrack);
                        },
                        [alive] {
                            if (alive)
                                alive->openVideoPicker();
                        }});
}

void WindowCoordinator::later(std::function<void()> work) {
    m_parts.mainQueue.post([alive = QPointer<WindowCoordinator>(this), work = std::move(work)] {
        if (alive)
            work();
    });
}

void WindowCoordinator::observePanels() {
    connect(m_parts.panels.control.get(), &Panel::moved, this, [this] { later([this] { layoutPanels(); }); });
    connect(m_parts.panels.webcam.get(), &Panel::moved, this, [this] { later([this] { syncCameraOverlayState(); }); });
}

void WindowCoordinator::observeCamera() {
    const auto updateWebcam = [this] { later([this] { updateWebcamPanel(); }); };
    connect(&m_model, &AppModelFields::cameraEnabledChanged, this, updateWebcam);
    connect(m_model.cameraService().get(), &CameraService::isRunningChanged, this, updateWebcam);
    connect(&m_model, &AppModelFields::cameraOverlaySizeChanged, this, updateWebcam);
    connect(&m_model, &AppModelFields::cameraOverlayShapeChanged, this,
            [this] { later([this] { syncCameraOverlayState(); }); });
}

void WindowCoordinator::observe() {
    connect(&m_model, &AppModelFields::currentSelectionChanged, this,
            [this](const std::optional<CaptureSelection>& selection) {
                later([this, selection] {
                    updateSelectionPreview(m_model.recordingState(), selection);
                    updateCursorEffectsOverlay();
                });
            });
    connect(&m_model, &AppModelFields::recordingStateChanged, this,
            [this](RecordingState state) { later([this, state] { recordingStateChanged(state); }); });
    connect(&m_model, &AppModelFields::isSettingsPresentedChanged, this,
            [this] { later([this] { settingsPresentedChanged(); }); });
    connect(&m_model, &AppModelFields::isCloseConfirmationPresentedChanged, this,
            [this] { later([this] { updateCloseConfirmationPanel(); }); });
    connect(&m_model, &AppModelFields::isSelectionRequiredPresentedChanged, this,
            [this] { later([this] { updateSelectionRequiredPanel(); }); });
    connect(&m_model, &AppModelFields::noticeChanged, this, [this] { later([this] { updateNoticePanel(); }); });
    connect(&m_model, &AppModelFields::lastSavedURLChanged, this,
            [this] { later([this] { updatePostRecordingPanel(); }); });
    const auto devicesChanged = [this] {
        later([this] {
            updateSettingsPanel(m_model.recordingState());
            updateNoticePanel();
        });
    };
    connect(&m_model, &AppModelFields::cameraDevicesChanged, this, devicesChanged);
    connect(&m_model, &AppModelFields::microphoneDevicesChanged, this, devicesChanged);
    const auto effectsChanged = [this] {
        later([this] {
            updateSettingsPanel(m_model.recordingState());
            updateCursorEffectsOverlay();
        });
    };
    connect(&m_model, &AppModelFields::showClickIndicatorsChanged, this, effectsChanged);
    connect(&m_model, &AppModelFields::showCursorHighlightChanged, this, effectsChanged);
}

void WindowCoordinator::show() {
    const RecordingState state = m_model.recordingState();
    updateSharingTypes(state);
    updateControlPanel(state);
    updateWebcamPanel();
    updateSettingsPanel(state);
    updateSelectionRequiredPanel();
    updateCursorEffectsOverlay();
    updateNoticePanel();
    updateRecordingTimerPanel(state);
    updatePostRecordingPanel();
    focusControlPanel();
}

/// So that the keyboard is the program's, unless the settings have it.
void WindowCoordinator::focusControlPanel() {
    if (m_parts.panels.control->isVisible() && !m_parts.panels.settings->isVisible())
        m_parts.panels.control->makeKeyAndOrderFront();
}

void WindowCoordinator::hidePanels() {
    for (Panel* panel : allPanels())
        panel->orderOut();
    // What is not on the screen is not in a recording either.
    syncCameraOverlayState();
}

QCoro::Task<std::optional<CaptureSelection>> WindowCoordinator::chooseSelection(CaptureMode mode,
                                                                                std::uint32_t displayID) {
    m_parts.panels.control->orderOut();
    m_parts.panels.webcam->orderOut();
    const QPointer<WindowCoordinator> alive(this);
    const std::optional<CaptureSelection> selection = co_await select(mode, displayID);
    if (!alive)
        co_return std::nullopt;
    // What comes later comes above.
    updateSelectionPreview(m_model.recordingState(), selection);
    m_parts.panels.control->orderFront();
    updateWebcamPanel();
    updateSettingsPanel(m_model.recordingState());
    co_return selection;
}

QCoro::Task<std::optional<CaptureSelection>> WindowCoordinator::select(CaptureMode mode, std::uint32_t displayID) {
    switch (mode) {
    case CaptureMode::region:
        return m_parts.selection->selectRegion();
    case CaptureMode::window:
        return m_parts.selection->selectWindow();
    case CaptureMode::display:
        break;
    }
    return m_parts.selection->selectDisplay(displayID);
}

QCoro::Task<> WindowCoordinator::runCountdown() {
    m_parts.selectionPreview->hide();
    return m_parts.countdown->run(static_cast<int>(m_model.countdownDuration()));
}

QCoro::Task<> WindowCoordinator::openVideoPicker() {
    if (m_isPickingVideo)
        co_return;
    m_isPickingVideo = true;
    m_parts.panels.settings->orderOut();
    const QPointer<WindowCoordinator> alive(this);
    const FileDialog dialog{
        tr("Choose a video to edit"),
        tr("Open"),
        {QStringLiteral("video/quicktime"), QStringLiteral("video/mp4"), QStringLiteral("video/*")}};
    const std::shared_ptr<Dialogs> dialogs = m_parts.dialogs;
    const Result<std::optional<QUrl>> answer =
        co_await awaitCompletion<std::optional<QUrl>>([&](auto done) { dialogs->chooseFile(dialog, std::move(done)); });
    if (!answer)
        logFailure("video dialog", answer.error());
    if (!alive)
        co_return;
    m_isPickingVideo = false;
    updateSettingsPanel(m_model.recordingState());
    if (const std::optional<QUrl> movie = answer.value_or(std::nullopt))
        openEditor(*movie, false);
}

void WindowCoordinator::openEditor(const QUrl& movie, bool hasLiveClickTrack) {
    if (m_editor) {
        m_editor->bringToFront();
        return;
    }
    if (!m_parts.makeEditor) {
        // An empty message before it lets the same one be told again.
        m_model.setErrorMessage({});
        m_model.setErrorMessage(tr("This version of KELDRA cannot edit videos yet."));
        return;
    }
    m_isEditorPresented = true;
    hidePanels();
    m_parts.selectionPreview->hide();
    m_parts.cursorEffectsOverlay->drop();
    m_editor = m_parts.makeEditor(movie, hasLiveClickTrack, [alive = QPointer<WindowCoordinator>(this)] {
        if (alive)
            alive->editorClosed();
    });
    updateSharingTypes(m_model.recordingState());
    m_editor->bringToFront();
}

void WindowCoordinator::editorClosed() {
    // The window is still at work with its closing.
    m_parts.mainQueue.post([closed = std::shared_ptr<EditorWindow>(std::move(m_editor))] {});
    m_isEditorPresented = false;
    updateControlPanel(m_model.recordingState());
    updateWebcamPanel();
    updateSelectionPreview(m_model.recordingState(), m_model.currentSelection());
    updateCursorEffectsOverlay();
}

} // namespace keldra
