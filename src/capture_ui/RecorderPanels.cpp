#include "capture_ui/RecorderPanels.h"

#include "capture_ui/CameraPreview.h"

#include <QCoreApplication>
#include <QQmlEngine>

void qml_register_types_Keldra_CaptureUi();

/// Static libraries bring their resources only to those who ask, and those must not stand in a namespace.
static void bringResources() {
    Q_INIT_RESOURCE(qmlcache_keldra_capture_ui);
    qml_register_types_Keldra_CaptureUi();
}

namespace keldra {
namespace {

QString words(const char* text) {
    return QCoreApplication::translate("RecorderPanels", text);
}

QUrl view(const char* name) {
    return QUrl(QStringLiteral("qrc:/qt/qml/Keldra/CaptureUi/%1.qml").arg(QLatin1String(name)));
}

QVariant object(QObject& model) {
    return QVariant::fromValue<QObject*>(&model);
}

void registerTypes() {
    static const bool isDone = [] {
        bringResources();
        qmlRegisterType<CameraPreview>("Keldra.CaptureUi", 1, 0, "CameraPreview");
        qRegisterMetaType<SliderValue>();
        qRegisterMetaType<DeviceChoice>();
        return true;
    }();
    Q_UNUSED(isDone)
}

QList<PanelConfiguration> configurations(RecorderViewModels& models) {
    const QVariantMap status{{QStringLiteral("panel"), object(models.status)}};
    const auto of = [](QObject& model) { return QVariantMap{{QStringLiteral("panel"), object(model)}}; };
    QVariantMap webcam = of(models.webcam);
    webcam.insert(QStringLiteral("status"), object(models.status));

    QList<PanelConfiguration> all{
        {QStringLiteral("control-panel"), words(QT_TRANSLATE_NOOP("RecorderPanels", "KELDRA")),
         view("ControlPanelView"), of(models.control)},
        {QStringLiteral("webcam-panel"), words(QT_TRANSLATE_NOOP("RecorderPanels", "Camera")),
         view("WebcamOverlayView"), webcam},
        {QLatin1String(settingsPanelIdentifier), words(QT_TRANSLATE_NOOP("RecorderPanels", "Settings")),
         view("SettingsPanelView"), of(models.settings)},
        {QStringLiteral("close-confirmation"), words(QT_TRANSLATE_NOOP("RecorderPanels", "Quit")),
         view("CloseConfirmationView"), status},
        {QStringLiteral("selection-required"), words(QT_TRANSLATE_NOOP("RecorderPanels", "Nothing selected")),
         view("SelectionRequiredView"), status},
        {QStringLiteral("notice"), words(QT_TRANSLATE_NOOP("RecorderPanels", "Notice")), view("AppNoticeView"),
         of(models.notice)},
        {QStringLiteral("recording-timer"), words(QT_TRANSLATE_NOOP("RecorderPanels", "Recording time")),
         view("RecordingTimerView"), status},
        {QStringLiteral("post-recording"), words(QT_TRANSLATE_NOOP("RecorderPanels", "Recording saved")),
         view("PostRecordingActionsView"), status},
    };
    for (PanelConfiguration& each : all) {
        each.isMovable =
            each.identifier != QLatin1String("selection-required") && each.identifier != QLatin1String("notice") &&
            each.identifier != QLatin1String("recording-timer") && each.identifier != QLatin1String("post-recording");
        each.ignoresMouse = each.identifier == QLatin1String("recording-timer");
        // The camera is what recordings are to see; a question must be asked, whoever sees it.
        each.mayBeRecorded =
            each.identifier == QLatin1String("webcam-panel") || each.identifier == QLatin1String("close-confirmation");
    }
    return all;
}

} // namespace

RecorderViewModels::RecorderViewModels(AppModel& model, Scheduler& scheduler,
                                       std::shared_ptr<const Workspace> workspace)
    : control(model), settings(model), notice(model, std::move(workspace)), status(model), webcam(model, scheduler) {}

PanelConfiguration panelConfiguration(const QString& identifier, RecorderViewModels& models) {
    registerTypes();
    for (const PanelConfiguration& each : configurations(models))
        if (each.identifier == identifier)
            return each;
    return {};
}

RecorderPanels makeRecorderPanels(RecorderViewModels& models, UiKit& kit) {
    const auto make = [&](const char* identifier) {
        return std::make_unique<FloatingPanel>(panelConfiguration(QLatin1String(identifier), models), kit);
    };
    auto control = make("control-panel");
    const auto makeCompanion = [&](const char* identifier) {
        auto panel = make(identifier);
        panel->stayWith(*control);
        return panel;
    };
    auto notice = makeCompanion("notice");
    auto recordingTimer = makeCompanion("recording-timer");
    auto postRecording = makeCompanion("post-recording");
    return {std::move(control),         make("webcam-panel"), make(settingsPanelIdentifier), make("close-confirmation"),
            make("selection-required"), std::move(notice),    std::move(recordingTimer),     std::move(postRecording)};
}

} // namespace keldra
