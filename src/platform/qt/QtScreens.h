#pragma once

#include "platform/Screens.h"

#include <QHash>
#include <QObject>

#include <mutex>

namespace keldra {

/// The monitors as Qt knows them, where nobody tells more. Made on main after the QGuiApplication; any thread.
class QtScreens final : public Screens {
public:
    QtScreens();
    QList<Screen> screens() const override;

private:
    void read();

    mutable std::mutex m_lock;
    QList<Screen> m_screens;
    /// Given at first sight, kept for the run.
    QHash<QString, std::uint32_t> m_numbers;
    /// What listens to Qt ends with it.
    QObject m_listener;
};

} // namespace keldra
