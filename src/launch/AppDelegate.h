#pragma once

#include "app/AppModel.h"
#include "capture_ui/StatusItemController.h"
#include "launch/AgentRequest.h"
#include "launch/RecorderWindows.h"

#include <QObject>
#include <QStringList>

namespace keldra {

/// Starts the desktop agent up, answers its tray item and other copies of the program, and sees to its end. It builds
/// what it owns through factories, and knows no window. Main thread.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// What is borrowed lives longer.
    struct Parts {
        Platform platform;
        Application& application;
        AppPreferences& preferences;
        Telemetry& telemetry;
        Scheduler& scheduler;
        Executor& mainQueue;
        /// Each is called once, the windows' when there is a model.
        std::function<std::shared_ptr<AppModel>()> makeModel;
        std::function<std::unique_ptr<RecorderWindows>(AppModel&)> makeWindows;
        /// Answers what keeps the tray item there.
        std::function<std::shared_ptr<void>(StatusItemController::Closures)> makeStatusItem;
        /// A failed recording that was kept and that the user does not know of yet.
        std::function<std::optional<QUrl>()> takeKeptRecording;
        /// What this desktop does not allow, in the user's words.
        QStringList limitations;
    };

    explicit AppDelegate(Parts parts);
    ~AppDelegate() override;

    /// The start-up. It ends the program when another copy stays in its place.
    QCoro::Task<> finishLaunching(AgentRequest request);
    /// Builds the recorder where it is missing.
    void openVideoForEditing();
    /// The desktop or a signal ends the program: nobody is asked, and a recording at work becomes a whole file.
    void terminate();

private:
    ApplicationRequests requests();
    StatusItemController::Closures statusItemClosures();
    void installOpenVideoCommand();
    void startTelemetry();
    /// Shows it when it is there.
    void buildRecorder();
    void toggleVisibility();
    void showSettings();
    bool makeWay();
    /// Shows the recorder even when the user has hidden it.
    void bringUp();
    void open(const QUrl& movie);
    void watchRecording();
    /// One after the other, each for its time.
    void tell(QList<AppNotice> notices);
    QList<AppNotice> firstNotices() const;

    Parts m_parts;
    std::shared_ptr<AppModel> m_model;
    std::unique_ptr<RecorderWindows> m_windows;
    std::shared_ptr<void> m_statusItem;
    EventMonitor::Watch m_openVideoCommand;
    SleepInhibitor::Hold m_wakefulness;
    Timer m_nextNotice;
    /// The program ends with the recording at work, and shows nothing any more.
    bool m_isEnding = false;
};

} // namespace keldra
