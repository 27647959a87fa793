#pragma once

#include "app/AppWorld.h"
#include "capture_ui/RecorderPanels.h"
#include "doubles/ScriptedPanels.h"
#include "ui_kit/UiKit.h"

#include <QImage>
#include <QPainter>

namespace keldra::test {

/// The recorder's real panels over a scripted desktop, in any moment that a test can name.
class PanelStage : public AppWorld {
public:
    using AppWorld::devices;
    using AppWorld::model;
    using AppWorld::screens;
    using AppWorld::time;
    using AppWorld::workspace;

    PanelStage() {
        devices->cameras.devices = {{"cam-a", "Integrated Camera"}, {"cam-b", "Studio Camera 4K"}};
        devices->cameras.defaultID = "cam-a";
        devices->microphones.devices = {{"mic-a", "Built-in Microphone"}, {"mic-b", "USB Microphone"}};
        screens->current = {{1, "Main", QRectF(0, 0, 1920, 1080), QRectF(0, 0, 1920, 1080), 1}};
    }
    ~PanelStage() override {
        coordinator.reset();
        views.reset();
        kit.reset();
        model.reset();
        overlays.selections.releaseAll();
        overlays.countdowns.releaseAll();
        time.settle();
    }

    /// The names of all moments.
    QStringList moments() const {
        QStringList names;
        for (const auto& [name, happens] : m_moments)
            names.append(name);
        return names;
    }
    /// False for a moment that nobody knows.
    bool show(const QString& moment) {
        const auto found = m_moments.find(moment);
        if (found == m_moments.end())
            return false;
        makeModel();
        kit = std::make_unique<UiKit>(std::make_shared<OwnWindows>());
        views = std::make_unique<RecorderViewModels>(*model, time.scheduler(), workspace);
        coordinator = std::make_unique<WindowCoordinator>(
            *model, WindowCoordinator::Parts{screens,
                                             dialogs,
                                             nullptr,
                                             time.mainQueue(),
                                             makeRecorderPanels(*views, *kit),
                                             std::make_unique<ScriptedSelection>(overlays),
                                             std::make_unique<ScriptedPreview>(overlays),
                                             std::make_unique<ScriptedCountdown>(overlays),
                                             std::make_unique<ScriptedEffectsOverlay>(overlays),
                                             {}});
        coordinator->show();
        time.settle();
        found->second();
        time.settle();
        return true;
    }

    /// A person in front of a wall, as a camera sees one.
    static PixelBuffer face() {
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, 640, 360);
        QImage image(picture.mutableData(), 640, 360, int(picture.strideBytes()), QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        QLinearGradient wall(0, 0, 640, 360);
        wall.setColorAt(0, QColor(64, 110, 128));
        wall.setColorAt(1, QColor(30, 44, 66));
        painter.fillRect(image.rect(), wall);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(222, 170, 130));
        painter.drawEllipse(QPointF(320, 160), 72, 92);
        painter.setBrush(QColor(60, 40, 34));
        painter.drawChord(QRectF(240, 52, 160, 160), 10 * 16, 160 * 16);
        painter.setBrush(QColor(210, 212, 220));
        painter.drawRoundedRect(QRectF(200, 262, 240, 140), 70, 70);
        return picture;
    }

    PanelStage& record() {
        model->setCurrentSelection(wholeDisplay);
        press();
        return *this;
    }

    OverlayScript overlays{time.mainQueue()};
    std::unique_ptr<UiKit> kit;
    std::unique_ptr<RecorderViewModels> views;
    std::unique_ptr<WindowCoordinator> coordinator;

private:
    void TestBody() override {}

    void lookIntoCamera() {
        views->webcam.feed()->setIsWatched(true);
        toggleCamera();
        camera->deliver(face());
        time.advance(std::chrono::milliseconds(50));
    }
    void speak() {
        toggleMicrophone();
        meter->power = -22;
        time.advance(std::chrono::milliseconds(200));
    }

    const std::map<QString, std::function<void()>> m_moments{
        {"idle", [] {}},
        {"ready", [this] { model->setCurrentSelection(wholeDisplay); }},
        {"devices", [this] { model->setCurrentSelection(wholeDisplay), lookIntoCamera(), speak(); }},
        {"countdown", [this] { overlays.countdowns.holds = true, record(); }},
        {"recording",
         [this] {
             lookIntoCamera(), speak(), record();
             time.advance(std::chrono::seconds(83));
         }},
        {"recording-camera-off", [this] { record(); }},
        {"stopping", [this] { record().model->stopRecording(); }},
        {"settings", [this] { model->setIsSettingsPresented(true); }},
        {"settings-recording", [this] { record().model->setIsSettingsPresented(true); }},
        {"settings-no-devices",
         [this] {
             model->setIsSettingsPresented(true);
             devices->connect(devices->cameras, {});
             devices->connect(devices->microphones, {});
         }},
        {"settings-notice",
         [this] { model->setIsSettingsPresented(true), model->setErrorMessage("No space left on device"); }},
        {"error",
         [this] { model->setErrorMessage("The microphone was not ready to be enabled during this recording."); }},
        {"error-action", [this] { model->setErrorMessage("Screen recording access was not granted"); }},
        {"selection-required", [this] { press(); }},
        {"close-confirmation", [this] { record().model->requestQuit(); }},
        {"post-recording",
         [this] {
             record().model->stopRecording();
             finish(take);
         }},
        {"camera-square",
         [this] {
             model->toggleCameraOverlayShape(), model->toggleCameraOverlaySize();
             lookIntoCamera();
         }},
    };
};

} // namespace keldra::test
