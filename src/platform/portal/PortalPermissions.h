#pragma once

#include "platform/Permissions.h"

#include <QDBusConnection>

#include <memory>

namespace keldra {

/// Wayland: the screen may be recorded where the desktop's portal can cast it; the portal itself asks the user, at the
/// start of each recording.
class PortalPermissions final : public Permissions {
public:
    explicit PortalPermissions(QDBusConnection bus) : m_bus(std::move(bus)) {}

    /// What the portal said last; false before it said anything.
    bool hasScreenCapture() const override { return *m_canCast; }
    /// Asks the portal whether it can.
    void requestScreenCapture(Completion<bool> done) override;

private:
    QDBusConnection m_bus;
    std::shared_ptr<bool> m_canCast = std::make_shared<bool>(false);
};

} // namespace keldra
