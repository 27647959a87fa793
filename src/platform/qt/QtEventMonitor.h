#pragma once

#include "platform/EventMonitor.h"

#include <QObject>

#include <vector>

namespace keldra {

/// Watches the events of this program's QWindows, before those and whatever is in them. Made and gone with the
/// application object. A window without an identifier, such as a dialog of the desktop, has an empty one.
class QtEventMonitor final : public QObject, public EventMonitor {
public:
    QtEventMonitor();
    [[nodiscard]] Watch watch(WindowEvent::Kind kind, Handler handler) override;
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    struct Watcher {
        WindowEvent::Kind kind;
        Handler handler;
    };
    std::vector<std::weak_ptr<Watcher>> m_watchers;
};

} // namespace keldra
