#include "launch/CaptureWindows.h"

#include "capture_ui/DesktopCountdownCoordinator.h"
#include "capture_ui/DesktopCursorEffectsOverlayCoordinator.h"
#include "capture_ui/DesktopSelectionCoordinator.h"
#include "capture_ui/DesktopSelectionPreviewCoordinator.h"
#include "capture_ui/RecorderPanels.h"
#include "capture_ui/WindowCoordinator.h"
#include "ui_kit/OverlayWindow.h"
#include "ui_kit/UiKit.h"

#include <QGuiApplication>
#include <QScreen>

namespace keldra {
namespace {

/// Of desktops that show no window of ours over others: the selection is not drawn on the screen.
class NoSelectionPreview final : public SelectionPreviewCoordinator {
public:
    void show(const CaptureSelection&, std::function<void(QRectF)>, std::function<void()>) override {}
    void hide() override {}
};

/// Of desktops that do not tell where the pointer is either.
class NoCursorEffectsOverlay final : public CursorEffectsOverlayCoordinator {
public:
    void show() override {}
    void drop() override {}
    void setPaused(bool) override {}
};

/// Everything that stands on the screen, in the order in which it is made.
class CaptureWindows final : public RecorderWindows {
public:
    CaptureWindows(AppModel& model, const Platform& platform, Scheduler& scheduler, Executor& mainQueue)
        : m_kit(platform.ownWindows, !platform.makeScreenStream)
        , m_overlays(platform.ownWindows, scheduler)
        , m_viewModels(model, scheduler, platform.workspace)
        , m_coordinator(model, coordinatorParts(model, platform, scheduler, mainQueue)) {
        watchMonitors();
    }

    void show() override { m_coordinator.show(); }
    void hidePanels() override { m_coordinator.hidePanels(); }
    void openVideoPicker() override { m_coordinator.openVideoPicker(); }
    void openEditor(const QUrl& movie) override { m_coordinator.openEditor(movie, false); }
    bool isHiddenFromMenuBar() const override { return m_coordinator.isHiddenFromMenuBar(); }
    void setIsHiddenFromMenuBar(bool isHidden) override { m_coordinator.setIsHiddenFromMenuBar(isHidden); }

private:
    void watchMonitors() {
        // In a later turn, when the desktop has settled about all of them.
        const auto tell = [this] { m_coordinator.screensChanged(); };
        const auto watch = [this, tell](const QScreen* screen) {
            QObject::connect(screen, &QScreen::availableGeometryChanged, &m_coordinator, tell, Qt::QueuedConnection);
        };
        for (const QScreen* screen : QGuiApplication::screens())
            watch(screen);
        QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_coordinator, watch);
        QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_coordinator, tell, Qt::QueuedConnection);
        QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &m_coordinator, tell, Qt::QueuedConnection);
    }

    WindowCoordinator::Parts coordinatorParts(AppModel& model, const Platform& platform, Scheduler& scheduler,
                                              Executor& mainQueue) {
        const PointerEffectsMonitor& effects = *model.pointerEffectsMonitor();
        std::unique_ptr<CursorEffectsOverlayCoordinator> effectsOverlay = std::make_unique<NoCursorEffectsOverlay>();
        if (!platform.pickDisplay)
            effectsOverlay = std::make_unique<DesktopCursorEffectsOverlayCoordinator>(
                DesktopCursorEffectsOverlayCoordinator::Parts{platform.screens, m_overlays, effects, scheduler});
        auto selection = std::make_unique<DesktopSelectionCoordinator>(DesktopSelectionCoordinator::Parts{
            platform.screens, platform.windows, m_overlays, effects, *effectsOverlay, scheduler, mainQueue});
        std::unique_ptr<SelectionPreviewCoordinator> preview = std::make_unique<NoSelectionPreview>();
        if (!platform.pickDisplay)
            preview = std::make_unique<DesktopSelectionPreviewCoordinator>(DesktopSelectionPreviewCoordinator::Parts{
                platform.screens, platform.windows, platform.events, m_overlays, mainQueue});
        auto countdown = std::make_unique<DesktopCountdownCoordinator>(DesktopCountdownCoordinator::Parts{
            platform.screens, platform.sounds, platform.clock, m_overlays, scheduler});
        return {platform.screens,
                platform.dialogs,
                platform.events,
                mainQueue,
                makeRecorderPanels(m_viewModels, m_kit),
                std::move(selection),
                std::move(preview),
                std::move(countdown),
                std::move(effectsOverlay),
                // There is no editor yet.
                {}};
    }

    UiKit m_kit;
    DesktopOverlays m_overlays;
    RecorderViewModels m_viewModels;
    WindowCoordinator m_coordinator;
};

} // namespace

std::unique_ptr<RecorderWindows> makeCaptureWindows(AppModel& model, const Platform& platform, Scheduler& scheduler,
                                                    Executor& mainQueue) {
    return std::make_unique<CaptureWindows>(model, platform, scheduler, mainQueue);
}

} // namespace keldra
