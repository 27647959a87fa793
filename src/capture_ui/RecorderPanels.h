#pragma once

#include "app/AppModel.h"
#include "capture_ui/ControlPanelModel.h"
#include "capture_ui/NoticeModel.h"
#include "capture_ui/RecordingStatusModel.h"
#include "capture_ui/SettingsPanelModel.h"
#include "capture_ui/WebcamPanelModel.h"
#include "capture_ui/WindowCoordinator.h"
#include "ui_kit/FloatingPanel.h"

#include <memory>

namespace keldra {

/// What the views of the recorder's panels show. Main thread.
struct RecorderViewModels {
    /// What is borrowed lives longer.
    RecorderViewModels(AppModel& model, Scheduler& scheduler, std::shared_ptr<const Workspace> workspace);

    ControlPanelModel control;
    SettingsPanelModel settings;
    NoticeModel notice;
    RecordingStatusModel status;
    WebcamPanelModel webcam;
};

/// The panels themselves with their views; `models` and `kit` live longer.
RecorderPanels makeRecorderPanels(RecorderViewModels& models, UiKit& kit);

/// One of them alone, by its identifier.
PanelConfiguration panelConfiguration(const QString& identifier, RecorderViewModels& models);

} // namespace keldra
