#include "capture_ui/WindowCoordinator.h"

#include "app/AppWorld.h"
#include "doubles/ScriptedPanels.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using namespace test;

/// An editor that says what was asked of it.
class ScriptedEditor final : public EditorWindow {
public:
    explicit ScriptedEditor(QStringList& told) : m_told(told) {}
    ~ScriptedEditor() override { m_told.append("gone"); }
    void bringToFront() override { m_told.append("front"); }
    void setSharingType(SharingType sharingType) override {
        m_told.append(sharingType == SharingType::none ? "unshared" : "shared");
    }

private:
    QStringList& m_told;
};

class WindowCoordination : public AppWorld {
protected:
    WindowCoordination() {
        screens->current = {{1, "Main", QRectF(0, 0, 1920, 1080), QRectF(0, 40, 1920, 1040), 1},
                            {2, "Side", QRectF(1920, 0, 1280, 800), QRectF(1920, 0, 1280, 800), 1}};
    }
    ~WindowCoordination() override {
        coordinator.reset();
        model.reset();
        overlays.selections.releaseAll();
        overlays.countdowns.releaseAll();
        time.settle();
    }

    void start(EditorWindowFactory makeEditor = {}) {
        makeModel();
        coordinator = std::make_unique<WindowCoordinator>(
            *model, WindowCoordinator::Parts{
                        screens, dialogs, events, time.mainQueue(), panels.make(),
                        std::make_unique<ScriptedSelection>(overlays), std::make_unique<ScriptedPreview>(overlays),
                        std::make_unique<ScriptedCountdown>(overlays),
                        std::make_unique<ScriptedEffectsOverlay>(overlays), std::move(makeEditor)});
        coordinator->show();
        time.settle();
    }
    void select(const std::optional<CaptureSelection>& selection) {
        model->setCurrentSelection(selection);
        time.settle();
    }
    void record() {
        select(wholeDisplay);
        press();
    }
    QPointF offset(const ScriptedPanel* panel) const {
        return panel->place.topLeft() - panels.control->place.topLeft();
    }

    PanelScript panels;
    /// By editors.
    QStringList told;
    OverlayScript overlays{time.mainQueue()};
    std::shared_ptr<ScriptedEvents> events = std::make_shared<ScriptedEvents>();
    std::unique_ptr<WindowCoordinator> coordinator;
};

TEST_F(WindowCoordination, ShowsWhatEachMomentAsksFor) {
    start();
    const QString others = "control settings confirm required notice saved";
    const struct {
        const char* name;
        std::function<void()> happens;
        QString visible;
        QString keyPanel;
        bool areKeptFromRecordings;
        bool hasPreview;
    } moments[] = {
        {"start", [] {}, "control", "control", false, false},
        {"settings", [this] { model->setIsSettingsPresented(true); }, "control settings", "settings", false, false},
        {"press without a selection", [this] { press(); }, "control required", "required", false, false},
        {"selection",
         [this] {
             model->setIsSelectionRequiredPresented(false);
             model->setCurrentSelection(wholeDisplay);
         },
         "control", "control", false, true},
        {"countdown",
         [this] {
             model->setIsSettingsPresented(true);
             overlays.countdowns.holds = true;
             press();
         },
         "", "control", false, false},
        {"recording", [this] { overlays.countdowns.releaseAll(); }, "control webcam settings timer", "settings", true,
         false},
        {"settings away", [this] { model->setIsSettingsPresented(false); }, "control webcam timer", "settings", true,
         false},
        {"quit", [this] { model->requestQuit(); }, "control webcam confirm timer", "confirm", true, false},
        {"no", [this] { model->setIsCloseConfirmationPresented(false); }, "control webcam timer", "confirm", true,
         false},
        {"stop", [this] { model->stopRecording(); }, "control webcam", "confirm", true, false},
        {"saved", [this] { finish(take); }, "control saved", "saved", false, false},
        {"dismissed", [this] { model->setLastSavedURL({}); }, "control", "saved", false, false},
        {"error", [this] { model->setErrorMessage("It rains."); }, "control notice", "saved", false, false},
        {"later", [this] { time.advance(6s); }, "control", "saved", false, false},
        {"hidden",
         [this] {
             model->setErrorMessage("It snows.");
             time.settle();
             coordinator->hidePanels();
         },
         "", "saved", false, false},
        {"shown again", [this] { coordinator->show(); }, "control notice", "control", false, false},
    };
    for (const auto& moment : moments) {
        moment.happens();
        time.settle();
        EXPECT_EQ(panels.visible(), moment.visible) << moment.name;
        EXPECT_EQ(panels.keyPanel, moment.keyPanel) << moment.name;
        EXPECT_EQ(panels.unshared(), moment.areKeptFromRecordings
                                         ? QString("control settings confirm required notice timer saved")
                                         : QString("timer"))
            << moment.name;
        EXPECT_EQ(overlays.preview.has_value(), moment.hasPreview) << moment.name;
    }
    EXPECT_EQ(overlays.countdownSeconds, QList<int>{5});
}

TEST_F(WindowCoordination, StandsAroundTheControlPanelAndMovesAlong) {
    start();
    EXPECT_EQ(panels.control->place, QRectF(702.5, 76, 515, 76));
    EXPECT_EQ(offset(panels.webcam), QPointF(529, 0));
    model->setIsSettingsPresented(true);
    model->setErrorMessage("It rains.");
    time.settle();
    EXPECT_EQ(panels.settings->place, QRectF(917.5, 160, 288, 780));
    EXPECT_EQ(offset(panels.notice), QPointF(149, 872));

    const QPointF webcam = panels.webcam->place.topLeft();
    panels.control->drag({300, 200});
    time.settle();
    EXPECT_FALSE(model->isSettingsPresented());
    EXPECT_EQ(offset(panels.notice), QPointF(47.5, 84));
    record();
    model->setIsSelectionRequiredPresented(true);
    model->requestQuit();
    model->setErrorMessage("It snows.");
    time.settle();
    for (const QPointF& origin : {QPointF(300, 200), QPointF(-20, 300), QPointF(900, 80)}) {
        panels.control->drag(origin);
        time.settle();
        if (origin.x() < 0)
            continue;
        EXPECT_EQ(offset(panels.notice), QPointF(47.5, 120)) << "above the timer";
        EXPECT_EQ(panels.recordingTimer->place.topLeft(), origin + QPointF(205.5, 84));
        EXPECT_EQ(panels.closeConfirmation->place, QRectF(origin + QPointF(111.5, 106), QSizeF(292, 116)));
        EXPECT_EQ(panels.selectionRequired->place, QRectF(origin + QPointF(82.5, 88), QSizeF(350, 132)));
    }
    model->setIsCloseConfirmationPresented(false);
    model->stopRecording();
    finish(take);
    EXPECT_EQ(panels.postRecording->place, QRectF(942.5, 166, 430, 58));
    EXPECT_EQ(panels.webcam->place.topLeft(), webcam) << "stays where the user has put it";

    panels.control->place.moveTopLeft({5000, 5000});
    coordinator->show();
    EXPECT_EQ(panels.control->place.topLeft(), QPointF(1405, 1004)) << "its screen is gone";
    panels.control->place.moveTopLeft({2000, 300});
    panels.webcam->place.moveTopLeft({2600, 300});
    screens->current.removeLast();
    coordinator->screensChanged();
    EXPECT_EQ(panels.control->place.topLeft(), QPointF(1405, 300));
    EXPECT_EQ(panels.webcam->place.right(), 1920);
    EXPECT_EQ(offset(panels.postRecording), QPointF(42.5, 86));
}

TEST_F(WindowCoordination, TellsTheRecorderWhereTheBubbleIs) {
    start();
    const auto bubble = [this] { return model->cameraOverlayState()->snapshot(); };
    EXPECT_EQ(panels.webcam->place.size(), QSizeF(292, 102));
    EXPECT_FALSE(bubble().isVisible);
    toggleCamera();
    EXPECT_EQ(panels.visible(), "control webcam");
    EXPECT_EQ(panels.webcam->place, QRectF(1231.5, 76, 292, 340));
    EXPECT_EQ(bubble(), (CameraOverlaySnapshot{true, QRectF(1257.5, 174, 240, 240), CameraOverlayShape::circle, 120}));
    model->toggleCameraOverlaySize();
    model->toggleCameraOverlayShape();
    time.settle();
    EXPECT_EQ(panels.webcam->place.size(), QSizeF(241, 280));
    EXPECT_EQ(bubble(), (CameraOverlaySnapshot{true, QRectF(1262, 174, 180, 180), CameraOverlayShape::roundedSquare,
                                               180 * 0.16}));
    panels.webcam->drag({100, 500});
    time.settle();
    EXPECT_EQ(bubble().frame.topLeft(), QPointF(130.5, 598));
    panels.webcam->place.moveTopLeft({9000, 500});
    model->toggleCameraOverlaySize();
    time.settle();
    EXPECT_EQ(panels.webcam->place.right(), 1920) << "its screen is gone";
    coordinator->hidePanels();
    EXPECT_FALSE(bubble().isVisible);
    coordinator->show();
    EXPECT_TRUE(bubble().isVisible);

    record();
    toggleCamera();
    EXPECT_EQ(panels.webcam->place.size(), QSizeF(292, 102)) << "without a picture the stop button stays";
    EXPECT_TRUE(panels.webcam->visible);
    EXPECT_FALSE(bubble().isVisible);
    model->stopRecording();
    finish(take);
    EXPECT_FALSE(panels.webcam->visible);
}

TEST_F(WindowCoordination, PicksWithThePanelsOutOfTheWay) {
    start();
    toggleCamera();
    overlays.selections.holds = true;
    overlays.picked = RegionSelection{1, {10, 20, 300, 200}};
    model->selectCaptureMode(CaptureMode::region);
    time.settle();
    EXPECT_EQ(panels.visible(), "");
    overlays.selections.releaseAll();
    time.settle();
    EXPECT_EQ(panels.visible(), "control webcam");
    EXPECT_EQ(overlays.preview, overlays.picked);

    overlays.onRegionChange({2000, 100, 400, 300});
    time.settle();
    EXPECT_EQ(model->currentSelection(), CaptureSelection(RegionSelection{2, {2000, 100, 400, 300}}));
    EXPECT_EQ(overlays.preview, model->currentSelection());
    overlays.onCancelPreview();
    time.settle();
    EXPECT_EQ(model->currentSelection(), std::nullopt);
    EXPECT_EQ(overlays.preview, std::nullopt);

    overlays.picked.reset();
    for (const CaptureMode mode : {CaptureMode::window, CaptureMode::display}) {
        model->selectCaptureMode(mode);
        time.settle();
    }
    EXPECT_EQ(overlays.asked, (QStringList{"region", "window", "display 2"}));
    EXPECT_EQ(panels.visible(), "control webcam") << "also after a cancel";

    overlays.selections.holds = true;
    model->selectCaptureMode(CaptureMode::window);
    time.settle();
    coordinator.reset();
    overlays.picked = wholeDisplay;
    overlays.selections.releaseAll();
    time.settle();
    EXPECT_EQ(model->currentSelection(), std::nullopt) << "the windows have gone";
    model->selectCaptureMode(CaptureMode::display);
    time.settle();
    EXPECT_EQ(overlays.asked.size(), 4);
}

TEST_F(WindowCoordination, ClicksElsewhereCloseTheSettings) {
    start();
    EXPECT_FALSE(events->isWatched());
    const auto click = [this](const char* window) {
        EXPECT_FALSE(events->send({WindowEvent::Kind::mouseUp, QLatin1String(window)})) << "the click goes on";
    };
    model->setIsSettingsPresented(true);
    time.settle();
    click(settingsPanelIdentifier);
    time.settle();
    EXPECT_TRUE(model->isSettingsPresented());
    click("control-panel");
    EXPECT_TRUE(model->isSettingsPresented()) << "the click has its effect first";
    time.settle();
    EXPECT_FALSE(model->isSettingsPresented());
    EXPECT_EQ(panels.visible(), "control");
    EXPECT_FALSE(events->isWatched());

    model->setIsSettingsPresented(true);
    record();
    click("webcam-panel");
    time.settle();
    EXPECT_FALSE(model->isSettingsPresented()) << "also after a countdown";
}

TEST_F(WindowCoordination, OpensOneEditorAndReturns) {
    QList<std::pair<QUrl, bool>> opened;
    std::function<void()> close;
    start([&](const QUrl& movie, bool hasLiveClickTrack, std::function<void()> closed) {
        opened.append({movie, hasLiveClickTrack});
        close = std::move(closed);
        return std::make_unique<ScriptedEditor>(told);
    });
    model->setShowClickIndicators(true);
    toggleCamera();
    model->setIsSettingsPresented(true);
    select(wholeDisplay);
    EXPECT_TRUE(overlays.effects);
    dialogs->choice = std::optional(QUrl("file:///one.mp4"));
    dialogs->answers.holds = true;
    model->windows().openVideoPicker();
    model->windows().openVideoPicker();
    time.settle();
    EXPECT_EQ(dialogs->shownFiles.size(), 1);
    EXPECT_EQ(panels.visible(), "control webcam") << "the dialog stands alone";
    dialogs->answers.releaseAll();
    time.settle();
    EXPECT_EQ(opened, (QList<std::pair<QUrl, bool>>{{QUrl("file:///one.mp4"), false}}));
    EXPECT_EQ(told, (QStringList{"shared", "front"}));
    EXPECT_EQ(panels.visible(), "");
    EXPECT_FALSE(overlays.effects);
    EXPECT_EQ(overlays.preview, std::nullopt);

    model->windows().openRecordingEditor(QUrl("file:///two.mov"), true);
    EXPECT_EQ(opened.size(), 1) << "one editor at a time";
    EXPECT_EQ(told.last(), "front");
    model->setErrorMessage("It rains.");
    select(wholeDisplay);
    EXPECT_EQ(panels.visible(), "");
    close();
    time.settle();
    EXPECT_EQ(told.last(), "gone");
    EXPECT_EQ(panels.visible(), "control webcam");
    EXPECT_EQ(overlays.preview, wholeDisplay);
    EXPECT_TRUE(overlays.effects);
    model->windows().openRecordingEditor(QUrl("file:///two.mov"), true);
    EXPECT_EQ(opened.last(), std::pair(QUrl("file:///two.mov"), true));
}

TEST_F(WindowCoordination, WithoutAnEditorItSaysSo) {
    start();
    dialogs->choice = std::optional<QUrl>();
    coordinator->openVideoPicker();
    time.settle();
    EXPECT_EQ(notices, QStringList()) << "a dialog that was cancelled";
    for (int time_ = 1; time_ <= 2; ++time_) {
        coordinator->openEditor(QUrl("file:///one.mp4"), false);
        time.settle();
        EXPECT_EQ(notices.size(), time_);
        EXPECT_EQ(panels.visible(), "control notice");
    }
    EXPECT_FALSE(coordinator->isEditorPresented());
    EXPECT_EQ(dialogs->shownFiles.first().message, "Choose a video to edit");
}

} // namespace
} // namespace keldra
