#include "platform/qt/QtEventMonitor.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWindow>

namespace keldra {
namespace {

std::optional<WindowEvent> read(const QWindow& window, const QEvent& event) {
    const QString identifier = window.property(windowIdentifierProperty).toString();
    switch (event.type()) {
    case QEvent::MouseButtonRelease:
        return WindowEvent{WindowEvent::Kind::mouseUp, identifier, 0, {}};
    case QEvent::KeyPress: {
        const auto& key = static_cast<const QKeyEvent&>(event);
        return WindowEvent{WindowEvent::Kind::keyDown, identifier, key.key(), key.modifiers()};
    }
    default:
        return std::nullopt;
    }
}

} // namespace

QtEventMonitor::QtEventMonitor() {
    QCoreApplication::instance()->installEventFilter(this);
}

EventMonitor::Watch QtEventMonitor::watch(WindowEvent::Kind kind, Handler handler) {
    auto watcher = std::make_shared<Watcher>(Watcher{kind, std::move(handler)});
    std::erase_if(m_watchers, [](const auto& each) { return each.expired(); });
    m_watchers.push_back(watcher);
    return watcher;
}

bool QtEventMonitor::eventFilter(QObject* receiver, QEvent* event) {
    if (!receiver->isWindowType())
        return false;
    const auto seen = read(*static_cast<QWindow*>(receiver), *event);
    if (!seen)
        return false;
    // A handler may begin and end watches.
    const auto watchers = m_watchers;
    for (const auto& each : watchers)
        if (const auto watcher = each.lock(); watcher && watcher->kind == seen->kind && watcher->handler(*seen))
            return true;
    return false;
}

} // namespace keldra
