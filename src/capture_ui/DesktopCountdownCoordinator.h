#pragma once

#include "async/Scheduler.h"
#include "base/HostClock.h"
#include "capture_ui/CountdownCoordinator.h"
#include "platform/Screens.h"
#include "platform/SystemSounds.h"
#include "ui_kit/Overlay.h"

#include <memory>

namespace keldra {

class CountdownView;

/// Counts on an overlay that covers all screens and lets clicks through.
class DesktopCountdownCoordinator final : public CountdownCoordinator {
public:
    /// References must outlive this object. Without `sounds` it counts silently.
    struct Parts {
        std::shared_ptr<Screens> screens;
        std::shared_ptr<SystemSounds> sounds;
        std::shared_ptr<const HostClock> clock;
        Overlays& overlays;
        Scheduler& scheduler;
    };
    explicit DesktopCountdownCoordinator(Parts parts);
    ~DesktopCountdownCoordinator() override;

    QCoro::Task<> run(int seconds) override;

private:
    void tick(int number);

    const Parts m_parts;
    std::shared_ptr<CountdownView> m_view;
    Timer m_animating;
};

} // namespace keldra
