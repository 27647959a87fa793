#pragma once

#include "app/AppModel.h"
#include "capture_ui/CountdownCoordinator.h"
#include "capture_ui/CursorEffectsOverlayCoordinator.h"
#include "capture_ui/SelectionCoordinator.h"
#include "capture_ui/SelectionPreviewCoordinator.h"
#include "platform/Dialogs.h"
#include "platform/EventMonitor.h"
#include "platform/Screens.h"
#include "ui_kit/EditorWindow.h"
#include "ui_kit/Panel.h"

#include <QCoroTask>
#include <QObject>

#include <memory>
#include <optional>

namespace keldra {

/// The panels of the recorder, all out of sight at first.
struct RecorderPanels {
    std::unique_ptr<Panel> control;
    std::unique_ptr<Panel> webcam;
    std::unique_ptr<Panel> settings;
    std::unique_ptr<Panel> closeConfirmation;
    std::unique_ptr<Panel> selectionRequired;
    std::unique_ptr<Panel> notice;
    std::unique_ptr<Panel> recordingTimer;
    std::unique_ptr<Panel> postRecording;
};

/// How events name the settings panel.
inline constexpr char settingsPanelIdentifier[] = "settings-panel";

/// Decides from the model's state which panels and overlays of the recorder are on the screen, where they stand and
/// whether a recording sees them, and lends the model its windows. What the model tells arrives here a turn later.
///
/// Space:   desktop points.
/// Threads: main.
class WindowCoordinator : public QObject {
    Q_OBJECT

public:
    /// What is borrowed lives longer.
    struct Parts {
        std::shared_ptr<Screens> screens;
        std::shared_ptr<Dialogs> dialogs;
        /// May be missing; then only the settings button and Escape close the settings.
        std::shared_ptr<EventMonitor> events;
        Executor& mainQueue;
        RecorderPanels panels;
        std::unique_ptr<SelectionCoordinator> selection;
        std::unique_ptr<SelectionPreviewCoordinator> selectionPreview;
        std::unique_ptr<CountdownCoordinator> countdown;
        std::unique_ptr<CursorEffectsOverlayCoordinator> cursorEffectsOverlay;
        EditorWindowFactory makeEditor;
    };

    WindowCoordinator(AppModel& model, Parts parts);
    ~WindowCoordinator() override;

    /// Puts everything on the screen that the model's state asks for, and gives the control panel the keyboard.
    void show();
    void hidePanels();
    /// Brings back, after a change of monitors, what stood on one that is gone.
    void screensChanged();
    QCoro::Task<> openVideoPicker();
    /// One editor at a time: one that is open comes to the front, whatever movie was asked for.
    void openEditor(const QUrl& movie, bool hasLiveClickTrack);

    /// The user has hidden the panels; whoever lets him do so keeps note of it here.
    bool isHiddenFromMenuBar() const { return m_isHiddenFromMenuBar; }
    void setIsHiddenFromMenuBar(bool isHidden) { m_isHiddenFromMenuBar = isHidden; }
    bool isEditorPresented() const { return m_isEditorPresented; }
    Panel& controlPanel() { return *m_parts.panels.control; }

private:
    void lendWindows();
    void observe();
    void observePanels();
    void observeCamera();
    void later(std::function<void()> work);

    QCoro::Task<std::optional<CaptureSelection>> chooseSelection(CaptureMode mode, std::uint32_t displayID);
    QCoro::Task<std::optional<CaptureSelection>> select(CaptureMode mode, std::uint32_t displayID);
    QCoro::Task<> runCountdown();
    void editorClosed();

    void recordingStateChanged(RecordingState state);
    void settingsPresentedChanged();
    void layoutPanels();
    void placeCompanions();
    void keepControlPanelOnScreen();

    void updateSharingTypes(RecordingState state);
    void focusControlPanel();
    void updateControlPanel(RecordingState state);
    void updateWebcamPanel();
    void updateSettingsPanel(RecordingState state);
    void updateSelectionRequiredPanel();
    void updateCloseConfirmationPanel();
    void updatePostRecordingPanel();
    void updateNoticePanel();
    void updateRecordingTimerPanel(RecordingState state);
    void updateCursorEffectsOverlay();
    void updateSelectionPreview(RecordingState state, const std::optional<CaptureSelection>& selection);
    void syncCameraOverlayState();
    void watchForDismissal();

    QList<Panel*> allPanels() const;
    QList<Screen> screens() const { return m_parts.screens->screens(); }
    /// Of the control panel, by which the others stand.
    QPointF origin() const;
    QPointF noticeOrigin() const;
    void placeCompanion(Panel& panel, QPointF offset, QSizeF size);

    AppModel& m_model;
    Parts m_parts;
    std::unique_ptr<EditorWindow> m_editor;
    EventMonitor::Watch m_settingsDismissMonitor;
    bool m_isHiddenFromMenuBar = false;
    bool m_isEditorPresented = false;
    bool m_isPickingVideo = false;
};

} // namespace keldra
