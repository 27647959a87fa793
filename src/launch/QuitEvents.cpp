#include "launch/QuitEvents.h"

#include <QEvent>
#include <QGuiApplication>
#include <QSessionManager>

namespace keldra {

QuitEvents::QuitEvents(std::function<void()> onQuit) : m_onQuit(std::move(onQuit)) {
    qGuiApp->installEventFilter(this);
    connect(
        qGuiApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) { m_onQuit(); },
        Qt::DirectConnection);
    // Whoever starts the agent at login says so in the desktop's autostart.
    connect(
        qGuiApp, &QGuiApplication::saveStateRequest, this,
        [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); }, Qt::DirectConnection);
}

bool QuitEvents::eventFilter(QObject* receiver, QEvent* event) {
    if (receiver != qGuiApp || event->type() != QEvent::Quit)
        return false;
    event->ignore();
    m_onQuit();
    return true;
}

} // namespace keldra
