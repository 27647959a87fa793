#pragma once

#include "platform/SleepInhibitor.h"

namespace keldra {

/// Asks whoever may send the machine to sleep: the desktop's screen saver and power management on the session bus, and
/// the login manager on the system bus. Those that are not there are left out.
class DBusSleepInhibitor final : public SleepInhibitor {
public:
    [[nodiscard]] Hold inhibit(const QString& reason) override;
};

} // namespace keldra
