#include "capture_ui/DesktopSelectionCoordinator.h"

#include "async/AwaitCompletion.h"
#include "capture_ui/SelectionOverlayView.h"
#include "ui_kit/DesktopCoordinates.h"

#include <utility>

namespace keldra {
namespace {

using namespace std::chrono_literals;

constexpr Duration refreshInterval = Duration(1s) / 60;
/// How long a program may take to paint what a hidden window of ours laid bare, before a picture is taken of it.
constexpr Duration settlingTime = 150ms;

} // namespace

DesktopSelectionCoordinator::DesktopSelectionCoordinator(Parts parts) : m_parts(std::move(parts)) {}

DesktopSelectionCoordinator::~DesktopSelectionCoordinator() {
    // Whoever waits is not left waiting.
    if (m_done)
        m_parts.mainQueue.post([done = std::move(m_done)] { done(std::optional<CaptureSelection>()); });
}

QCoro::Task<std::optional<CaptureSelection>> DesktopSelectionCoordinator::selectRegion() {
    return select(CaptureMode::region, 0);
}

QCoro::Task<std::optional<CaptureSelection>> DesktopSelectionCoordinator::selectWindow() {
    return select(CaptureMode::window, 0);
}

QCoro::Task<std::optional<CaptureSelection>>
DesktopSelectionCoordinator::selectDisplay(std::uint32_t preferredDisplayID) {
    return select(CaptureMode::display, preferredDisplayID);
}

QCoro::Task<std::optional<CaptureSelection>> DesktopSelectionCoordinator::select(CaptureMode mode,
                                                                                 std::uint32_t preferredDisplayID) {
    // From here on nothing of this object is touched: it may be gone when the answer comes.
    auto answer = co_await awaitCompletion<std::optional<CaptureSelection>>(
        [&](auto done) { begin(mode, preferredDisplayID, std::move(done)); });
    co_return answer.value_or(std::nullopt);
}

void DesktopSelectionCoordinator::begin(CaptureMode mode, std::uint32_t preferredDisplayID, Done done) {
    if (m_done)
        finish(std::nullopt);
    m_done = std::move(done);
    m_parts.cursorEffects.setPaused(true);
    if (m_parts.overlays.areTranslucent())
        open(mode, preferredDisplayID);
    else
        m_settling = m_parts.scheduler.after(settlingTime, [=, this] { open(mode, preferredDisplayID); });
}

void DesktopSelectionCoordinator::open(CaptureMode mode, std::uint32_t preferredDisplayID) {
    SelectionScene scene{m_parts.screens->screens(), windowCandidates(m_parts.windows->windows())};
    if (scene.screens.isEmpty())
        return finish(std::nullopt);
    OverlayOptions options;
    options.identifier = QStringLiteral("selection-overlay");
    options.frame = unionOfFrames(scene.screens);
    options.substitute = OverlayOptions::Substitute::screenshot;
    options.takesKeyboard = true;
    m_view = std::make_unique<SelectionOverlayView>(
        SelectionInteraction(mode, std::move(scene), preferredDisplayID), m_parts.pointerEffects,
        [this](std::optional<CaptureSelection> selection) { finish(std::move(selection)); });
    m_view->open(m_parts.overlays, options);
    m_refreshing = m_parts.scheduler.every(refreshInterval, [this] { m_view->refreshEffects(); });
}

void DesktopSelectionCoordinator::finish(std::optional<CaptureSelection> selection) {
    m_settling.cancel();
    m_refreshing.cancel();
    m_parts.mainQueue.post([this, life = std::weak_ptr(m_life), view = std::shared_ptr(std::move(m_view)),
                            done = std::exchange(m_done, nullptr), selection = std::move(selection)]() mutable {
        view.reset();
        if (life.expired())
            selection.reset();
        else if (!m_done)
            m_parts.cursorEffects.setPaused(false);
        done(std::move(selection));
    });
}

} // namespace keldra
