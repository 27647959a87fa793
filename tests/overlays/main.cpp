// For developers and for the end-to-end tests: runs one overlay on the real desktop and tells what comes of it, one
// JSON object a line.
//
//   keldra_overlays region | window | display [ID]
//   keldra_overlays preview-region X Y W H | preview-display ID | preview-window ID       desktop points
//   keldra_overlays countdown SECONDS
//   keldra_overlays effects [highlight]
//
// With --panel a stand-in for a panel is shown too; with --focused-panel it has the keyboard first. Points are pixels
// divided by QT_SCALE_FACTOR.

#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "base/Overloaded.h"
#include "capture_ui/DesktopCountdownCoordinator.h"
#include "capture_ui/DesktopCursorEffectsOverlayCoordinator.h"
#include "capture_ui/DesktopSelectionCoordinator.h"
#include "capture_ui/DesktopSelectionPreviewCoordinator.h"
#include "platform/qt/QtEventMonitor.h"
#include "platform/x11/X11Platform.h"
#include "recording/PointerEffectsMonitor.h"
#include "ui_kit/OverlayWindow.h"
#include "ui_kit/RegisteredWindow.h"
#include "ui_kit/X11WindowManagement.h"

#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QRasterWindow>

#include <csignal>
#include <cstdio>
#include <optional>

namespace keldra {
namespace {

using namespace std::chrono_literals;

void say(const QJsonObject& object) {
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

QJsonObject rectObject(const QRectF& rect) {
    return {{"x", rect.x()}, {"y", rect.y()}, {"width", rect.width()}, {"height", rect.height()}};
}

QJsonObject selectionObject(const std::optional<CaptureSelection>& selection) {
    if (!selection)
        return {{"cancelled", true}};
    return std::visit(
        Overloaded{
            [](const DisplaySelection& display) {
                return QJsonObject{{"display", int(display.displayID)}, {"name", display.name}};
            },
            [](const RegionSelection& region) {
                return QJsonObject{{"display", int(region.displayID)}, {"region", rectObject(region.rect)}};
            },
            [](const WindowSelection& window) {
                return QJsonObject{{"display", int(window.displayID)},
                                   {"window", double(window.windowID)},
                                   {"rect", rectObject(window.rect)},
                                   {"title", window.title}};
            },
        },
        *selection);
}

/// Tells what would be heard.
class ToldSounds final : public SystemSounds {
public:
    void play(const QString& name) override { say({{"sound", name}}); }
};

/// Flagged as a panel is.
class PanelStandIn final : public QRasterWindow {
public:
    PanelStandIn() {
        setFlags(Qt::FramelessWindowHint | Qt::Window | Qt::WindowStaysOnTopHint);
        setTitle("panel");
        setGeometry(500, 700, 400, 80);
        manageAsPanel(*this);
        show();
    }
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(QRect({}, size()), QColor(0x40, 0x60, 0xd0)); }
};

class Program {
public:
    explicit Program(double scaleFactor)
        : m_platform(makeX11Platform(std::make_shared<SystemHostClock>(), m_mainQueue, scaleFactor).value())
        , m_effects(m_platform.pointer, m_platform.ownWindows, m_platform.clock, *m_scheduler) {}

    bool run(QStringList words) {
        const bool isFocused = words.removeAll("--focused-panel") > 0;
        if (words.removeAll("--panel") > 0 || isFocused)
            m_panel.emplace();
        if (!isFocused)
            return begin(words);
        m_panel->requestActivate();
        QObject::connect(
            &*m_panel, &QWindow::activeChanged, &*m_panel, [this, words] { begin(words); }, Qt::SingleShotConnection);
        return true;
    }

private:
    bool begin(QStringList words) {
        if (words.isEmpty())
            return false;
        const QString what = words.takeFirst();
        if (what == "effects")
            showEffects(words.contains("highlight"));
        else if (what == "countdown")
            countDown(words.value(0).toInt());
        else if (what.startsWith("preview-"))
            preview(what, words);
        else if (what == "region")
            select(m_selection.selectRegion());
        else if (what == "window")
            select(m_selection.selectWindow());
        else if (what == "display")
            select(m_selection.selectDisplay(words.value(0).toUInt()));
        else
            return false;
        m_watching = m_scheduler->every(5ms, [this] { tellWhenUp(); });
        return true;
    }

    void tellWhenUp() {
        QJsonObject up;
        for (const QWindow* window : QGuiApplication::topLevelWindows())
            if (window->isExposed())
                up.insert(window->title(), double(window->winId()));
            else if (window->isVisible())
                return;
        if (up.isEmpty() || (m_panel && up.size() == 1))
            return;
        m_watching.cancel();
        say({{"up", up}});
    }

    void select(QCoro::Task<std::optional<CaptureSelection>> task) {
        task.then([this](const std::optional<CaptureSelection>& selection) {
            say(selectionObject(selection));
            m_mainQueue.post([] { QCoreApplication::quit(); });
        });
    }

    void countDown(int seconds) {
        m_countdown.run(seconds).then([this] {
            say({{"done", true}});
            m_mainQueue.post([] { QCoreApplication::quit(); });
        });
    }

    void preview(const QString& what, const QStringList& words) {
        CaptureSelection selection = DisplaySelection{words.value(0).toUInt(), {}};
        if (what == "preview-window")
            selection = WindowSelection{1, words.value(0).toUInt(), {}, {}};
        if (what == "preview-region")
            selection = RegionSelection{1, QRectF(words.value(0).toDouble(), words.value(1).toDouble(),
                                                  words.value(2).toDouble(), words.value(3).toDouble())};
        showPreview(selection);
    }

    void showPreview(const CaptureSelection& selection) {
        m_preview.show(
            selection,
            [this](QRectF region) {
                say({{"region", rectObject(region)}});
                // As the model's observers do, one turn later.
                m_mainQueue.post([this, region] { showPreview(RegionSelection{1, region}); });
            },
            [] {
                say({{"cancelled", true}});
                QCoreApplication::quit();
            });
        // As its owner does.
        if (m_panel)
            m_panel->requestActivate();
    }

    void showEffects(bool highlight) {
        PointerEffectsSettings settings;
        settings.showsCursorHighlight = highlight;
        m_effects.updateSettings(settings);
        m_cursorEffects.show();
    }

    std::shared_ptr<MainScheduler> m_scheduler = std::make_shared<MainScheduler>();
    MainQueue m_mainQueue{m_scheduler};
    Platform m_platform;
    PointerEffectsMonitor m_effects;
    DesktopOverlays m_overlays{m_platform.ownWindows, *m_scheduler};
    DesktopCursorEffectsOverlayCoordinator m_cursorEffects{{m_platform.screens, m_overlays, m_effects, *m_scheduler}};
    DesktopSelectionCoordinator m_selection{
        {m_platform.screens, m_platform.windows, m_overlays, m_effects, m_cursorEffects, *m_scheduler, m_mainQueue}};
    DesktopSelectionPreviewCoordinator m_preview{
        {m_platform.screens, m_platform.windows, std::make_shared<QtEventMonitor>(), m_overlays, m_mainQueue}};
    DesktopCountdownCoordinator m_countdown{
        {m_platform.screens, std::make_shared<ToldSounds>(), m_platform.clock, m_overlays, *m_scheduler}};
    std::optional<PanelStandIn> m_panel;
    Timer m_watching;
};

} // namespace
} // namespace keldra

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    std::signal(SIGTERM, [](int) { std::_Exit(0); });
    keldra::Program program(qGuiApp->devicePixelRatio());
    if (!program.run(QCoreApplication::arguments().mid(1))) {
        std::fputs("keldra_overlays: see the head of tests/overlays/main.cpp\n", stderr);
        return 2;
    }
    return QCoreApplication::exec();
}
