#include "launch/AgentProgram.h"

#include "app/KeptRecording.h"
#include "async/AwaitCompletion.h"
#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "base/SerialQueue.h"
#include "cli/StopSignals.h"
#include "identity/Identity.h"
#include "launch/AppDelegate.h"
#include "launch/CaptureWindows.h"
#include "launch/DesktopPlatform.h"
#include "launch/DesktopScale.h"
#include "launch/QuitEvents.h"
#include "launch/RecorderModel.h"
#include "launch/Translations.h"
#include "platform/qt/QtApplication.h"
#include "platform/x11/X11ScaleFactor.h"
#include "recording/RecordingPath.h"
#include "services/QtHttpSession.h"
#include "ui_kit/UiKit.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QLibraryInfo>
#include <QRandomGenerator>

#include <cstdio>
#include <optional>

namespace keldra {
namespace {

int failToStart(const Error& error) {
    std::fprintf(stderr, "keldra: %s\n", error.message.c_str());
    return 1;
}

bool canShowOnWayland() {
    const QString plugins = QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms");
    const QDir runtime(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    const QString socket = qEnvironmentVariable("WAYLAND_DISPLAY", QStringLiteral("wayland-0"));
    return QFileInfo::exists(runtime.absoluteFilePath(socket)) &&
           !QDir(plugins).entryList({QStringLiteral("libqwayland*")}).isEmpty();
}

/// One for an X11 desktop; on Wayland Qt and the desktop settle it between themselves.
/// Errors: there is no display, in one line that says what to do.
Result<std::optional<double>> readScaleFactor() {
    if (isWaylandSession() && canShowOnWayland())
        return std::nullopt;
    TRY_LET(const double factor, readX11ScaleFactor(qEnvironmentVariable("QT_SCALE_FACTOR")));
    return factor;
}

void nameApplication() {
    QCoreApplication::setApplicationName(QStringLiteral("KELDRA"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(identity::version));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(identity::applicationID));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/keldra.svg")));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

QStringList limitations() {
    if (!isWaylandSession())
        return {};
    return {
        AppDelegate::tr("On Wayland your desktop asks which display is recorded. Areas and windows cannot be picked "
                        "there, and cursor effects are not drawn.")};
}

/// Everything of the agent, in the order in which it is made; it goes in the reverse one.
class Agent {
public:
    Agent(std::shared_ptr<MainScheduler> scheduler, MainQueue& mainQueue, Platform platform,
          const AnalyticsAccount& account)
        : m_scheduler(std::move(scheduler))
        , m_mainQueue(mainQueue)
        , m_application(QCoreApplication::applicationVersion(), QString::fromUtf8(identity::build))
        , m_preferences(AppPreferences::ofUser())
        , m_session(*m_scheduler)
        , m_aptabase(m_application, analyticsTools(), account.hosts)
        , m_telemetry(m_aptabase, account)
        , m_delegate(delegateParts(std::move(platform)))
        , m_quitEvents([this] { m_delegate.terminate(); })
        , m_stopSignals([this] { m_delegate.terminate(); }) {}

    AppDelegate& delegate() { return m_delegate; }

private:
    AnalyticsTools analyticsTools() {
        return {m_session,
                m_analyticsQueue,
                m_mainQueue,
                *m_scheduler,
                [] { return QDateTime::currentDateTimeUtc(); },
                [](quint32 bound) { return QRandomGenerator::global()->bounded(bound); }};
    }
    AppDelegate::Parts delegateParts(Platform platform) {
        return {platform,
                m_application,
                *m_preferences,
                m_telemetry,
                *m_scheduler,
                m_mainQueue,
                [this, platform] {
                    return makeRecorderModel({platform, m_application, m_telemetry, *m_scheduler, m_mainQueue});
                },
                [this, platform](AppModel& model) {
                    return makeCaptureWindows(model, platform, *m_scheduler, m_mainQueue);
                },
                [](StatusItemController::Closures closures) {
                    return std::make_shared<StatusItemController>(std::move(closures));
                },
                [this] {
                    return takeUntoldKeptRecording(recordingRecoveryDirectory(),
                                                   m_preferences->loadOutputDirectory().toLocalFile(), *m_preferences);
                },
                limitations()};
    }

    const std::shared_ptr<MainScheduler> m_scheduler;
    MainQueue& m_mainQueue;
    QtApplication m_application;
    const std::unique_ptr<AppPreferences> m_preferences;
    QtHttpSession m_session;
    SerialQueue m_analyticsQueue{"KELDRA.Analytics"};
    Aptabase m_aptabase;
    Telemetry m_telemetry;
    AppDelegate m_delegate;
    QuitEvents m_quitEvents;
    StopSignals m_stopSignals;
};

QCoro::Task<> launch(AppDelegate& delegate, std::shared_ptr<Permissions> permissions, AgentRequest request) {
    // What a portal allows is known when it was asked once; nobody is asked for anything here.
    if (permissions)
        (void)co_await awaitCompletion<bool>([&](auto done) { permissions->requestScreenCapture(std::move(done)); });
    co_await delegate.finishLaunching(request);
}

} // namespace

int runAgent(int& argc, char** argv, const AgentRequest& request, AnalyticsAccount account) {
    const auto scale = readScaleFactor();
    if (!scale)
        return failToStart(scale.error());
    UiKit::chooseRenderer();
    std::optional<DesktopScale> forQt;
    if (*scale)
        forQt.emplace(**scale);
    QApplication application(argc, argv);
    forQt.reset();
    nameApplication();
    installTranslations();

    const auto clock = std::make_shared<SystemHostClock>();
    const auto scheduler = std::make_shared<MainScheduler>();
    MainQueue mainQueue(scheduler);
    const auto platform = makeAgentPlatform(clock, *scheduler, mainQueue, scale->value_or(1));
    if (!platform)
        return failToStart(platform.error());
    Agent agent(scheduler, mainQueue, *platform, account);
    mainQueue.post([&] { launch(agent.delegate(), platform->permissions, request); });
    return QApplication::exec();
}

} // namespace keldra
