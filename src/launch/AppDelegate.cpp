#include "launch/AppDelegate.h"

#include "launch/OnlyCopy.h"

#include <QPointer>

namespace keldra {

AppDelegate::AppDelegate(Parts parts) : m_parts(std::move(parts)) {}

AppDelegate::~AppDelegate() = default;

QCoro::Task<> AppDelegate::finishLaunching(AgentRequest request) {
    const QPointer<AppDelegate> alive(this);
    if (const auto applications = m_parts.platform.applications) {
        const ApplicationRequests served = requests();
        const bool goesOn = co_await becomeOnlyCopy(applications, request, served);
        if (!alive)
            co_return;
        if (!goesOn) {
            m_parts.application.terminate();
            co_return;
        }
    }
    m_statusItem = m_parts.makeStatusItem(statusItemClosures());
    installOpenVideoCommand();
    startTelemetry();
    bringUp();
    tell(firstNotices());
    if (request.opensPicker)
        openVideoForEditing();
    else if (!request.file.isEmpty())
        open(request.file);
}

ApplicationRequests AppDelegate::requests() {
    // All of them come from outside at any time; this object goes with the program.
    const QPointer<AppDelegate> alive(this);
    return {[alive] { return !alive || alive->makeWay(); },
            [alive] {
                if (alive)
                    alive->bringUp();
            },
            [alive](const QUrl& file) {
                if (alive)
                    alive->open(file);
            },
            [alive] {
                if (alive)
                    alive->openVideoForEditing();
            }};
}

StatusItemController::Closures AppDelegate::statusItemClosures() {
    const QPointer<AppDelegate> alive(this);
    return {[alive] { return !alive || !alive->m_windows || !alive->m_windows->isHiddenFromMenuBar(); },
            [alive] {
                if (alive)
                    alive->toggleVisibility();
            },
            [alive] {
                if (alive)
                    alive->showSettings();
            },
            [alive] {
                if (!alive)
                    return;
                if (alive->m_model)
                    alive->m_model->requestQuit();
                else
                    alive->m_parts.application.terminate();
            }};
}

void AppDelegate::installOpenVideoCommand() {
    if (!m_parts.platform.events)
        return;
    m_openVideoCommand = m_parts.platform.events->watch(WindowEvent::Kind::keyDown, [this](const WindowEvent& event) {
        // The desktop's dialogs keep their keys, and are not seen below a selection that is under way.
        if (event.window == u"selection-overlay" || event.key != Qt::Key_O || event.modifiers != Qt::ControlModifier ||
            event.window.isEmpty())
            return false;
        openVideoForEditing();
        return true;
    });
}

void AppDelegate::startTelemetry() {
    m_parts.telemetry.setEnabled(m_parts.preferences.value(preferenceKeys::analyticsEnabled));
    m_parts.telemetry.trackAppLaunched();
}

void AppDelegate::buildRecorder() {
    if (!m_windows) {
        m_model = m_parts.makeModel();
        watchRecording();
        m_windows = m_parts.makeWindows(*m_model);
    }
    m_windows->show();
}

void AppDelegate::watchRecording() {
    connect(m_model.get(), &AppModelFields::recordingStateChanged, this, [this](RecordingState state) {
        const auto& inhibitor = m_parts.platform.sleepInhibitor;
        const bool isBusy = state == RecordingState::recording || state == RecordingState::stopping;
        if (!isBusy)
            m_wakefulness.reset();
        else if (!m_wakefulness && inhibitor)
            m_wakefulness = inhibitor->inhibit(tr("The screen is being recorded"));
    });
    connect(m_model.get(), &AppModel::willQuitAfterRecording, this, [this] {
        m_isEnding = true;
        m_windows->hidePanels();
        // The menu that this came from may still be open.
        m_parts.mainQueue.post([alive = QPointer<AppDelegate>(this)] {
            if (alive)
                alive->m_statusItem.reset();
        });
    });
}

void AppDelegate::toggleVisibility() {
    if (!m_windows)
        return;
    m_windows->setIsHiddenFromMenuBar(!m_windows->isHiddenFromMenuBar());
    if (m_windows->isHiddenFromMenuBar())
        m_windows->hidePanels();
    else
        m_windows->show();
}

void AppDelegate::showSettings() {
    if (!m_windows)
        return;
    if (m_windows->isHiddenFromMenuBar())
        toggleVisibility();
    m_model->setIsSettingsPresented(true);
}

void AppDelegate::bringUp() {
    if (m_isEnding)
        return;
    if (m_windows)
        m_windows->setIsHiddenFromMenuBar(false);
    buildRecorder();
}

void AppDelegate::openVideoForEditing() {
    if (m_isEnding)
        return;
    if (!m_windows)
        buildRecorder();
    m_windows->openVideoPicker();
}

void AppDelegate::open(const QUrl& movie) {
    if (m_isEnding)
        return;
    if (!m_windows)
        buildRecorder();
    m_windows->openEditor(movie);
}

bool AppDelegate::makeWay() {
    if (!m_isEnding && m_model && m_model->isRecordingAtWork()) {
        bringUp();
        return false;
    }
    // The answer leaves first.
    m_parts.mainQueue.post([alive = QPointer<AppDelegate>(this)] {
        if (alive)
            alive->terminate();
    });
    return true;
}

void AppDelegate::terminate() {
    if (m_model)
        m_model->quitWithoutAsking();
    else
        m_parts.application.terminate();
}

QList<AppNotice> AppDelegate::firstNotices() const {
    QList<AppNotice> notices;
    for (const QString& limitation : m_parts.limitations)
        notices.append({{}, AppNotice::Kind::info, limitation});
    if (const auto kept = m_parts.takeKeptRecording())
        notices.append({{},
                        AppNotice::Kind::info,
                        tr("A recording that could not be finished has been kept."),
                        AppNotice::RevealFile{*kept}});
    return notices;
}

void AppDelegate::tell(QList<AppNotice> notices) {
    if (notices.isEmpty())
        return;
    const AppNotice next = notices.takeFirst();
    m_model->showNotice(next.kind, next.message, next.action);
    if (const auto lifetime = noticeLifetime(next))
        m_nextNotice = m_parts.scheduler.after(*lifetime, [this, notices] { tell(notices); });
}

} // namespace keldra
