#include "capture_ui/DesktopCountdownCoordinator.h"

#include "capture_ui/CountdownView.h"
#include "ui_kit/DesktopCoordinates.h"

#include <utility>

namespace keldra {
namespace {

using namespace std::chrono_literals;

constexpr Duration tickInterval = 1s;
constexpr Duration frameInterval = Duration(1s) / 60;

QString soundOf(int number) {
    return number == 1 ? QStringLiteral("Hero") : QStringLiteral("Tink");
}

} // namespace

DesktopCountdownCoordinator::DesktopCountdownCoordinator(Parts parts) : m_parts(std::move(parts)) {}

DesktopCountdownCoordinator::~DesktopCountdownCoordinator() = default;

QCoro::Task<> DesktopCountdownCoordinator::run(int seconds) {
    if (seconds < 1)
        co_return;
    m_view = std::make_shared<CountdownView>();
    m_view->open(m_parts.overlays, unionOfFrames(m_parts.screens->screens()));
    // Whoever destroys this object, or begins another countdown, ends this one's part in it.
    const std::weak_ptr<CountdownView> shown = m_view;
    Scheduler& scheduler = m_parts.scheduler;
    for (int number = seconds; number >= 1; --number) {
        if (!shown.expired())
            tick(number);
        co_await scheduler.sleep(tickInterval);
    }
    if (shown.expired())
        co_return;
    m_animating.cancel();
    m_view.reset();
}

void DesktopCountdownCoordinator::tick(int number) {
    m_view->tick(number);
    if (m_parts.sounds)
        m_parts.sounds->play(soundOf(number));
    const double begun = m_parts.clock->now().seconds();
    m_animating = m_parts.scheduler.every(frameInterval, [this, begun] {
        const double since = m_parts.clock->now().seconds() - begun;
        m_view->setTimeSinceTick(since);
        if (since >= countdownTransition)
            m_animating.cancel();
    });
}

} // namespace keldra
