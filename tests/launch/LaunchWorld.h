#pragma once

#include "app/AppWorld.h"
#include "launch/AppDelegate.h"
#include "launch/ScriptedRunningApplications.h"

#include <vector>

namespace keldra::test {

/// Keys that a test presses.
class ScriptedEventMonitor final : public EventMonitor {
public:
    [[nodiscard]] Watch watch(WindowEvent::Kind, Handler watching) override {
        handler = std::move(watching);
        return std::make_shared<int>();
    }
    Handler handler;
};

class CountingSleepInhibitor final : public SleepInhibitor {
public:
    [[nodiscard]] Hold inhibit(const QString&) override {
        ++holds;
        return {this, [](CountingSleepInhibitor* inhibitor) { --inhibitor->holds; }};
    }
    int holds = 0;
};

/// An agent whose windows, tray item and fellow copies a test plays; `log` has what it did with them.
class LaunchWorld : public AppWorld {
protected:
    class Windows final : public RecorderWindows {
    public:
        explicit Windows(LaunchWorld& world) : m_world(world) {}
        void show() override { m_world.log.append("show"); }
        void hidePanels() override { m_world.log.append("hide"); }
        void openVideoPicker() override { m_world.log.append("pick"); }
        void openEditor(const QUrl& movie) override { m_world.log.append("edit:" + movie.fileName()); }
        bool isHiddenFromMenuBar() const override { return m_isHidden; }
        void setIsHiddenFromMenuBar(bool isHidden) override { m_isHidden = isHidden; }

    private:
        LaunchWorld& m_world;
        bool m_isHidden = false;
    };

    ~LaunchWorld() override { delegate.reset(); }

    /// A start beside these copies.
    AppDelegate& launch(AgentRequest request = {}, QList<ScriptedCopy> others = {}) {
        applications = std::make_shared<ScriptedRunningApplications>(time, std::move(others));
        Platform platform;
        platform.applications = hasBus ? applications : nullptr;
        platform.events = events;
        platform.sleepInhibitor = sleepInhibitor;
        delegate = std::make_unique<AppDelegate>(AppDelegate::Parts{
            platform, analytics.application, preferences, telemetry, time.scheduler(), time.mainQueue(),
            [this] { return std::shared_ptr<AppModel>(std::shared_ptr<void>(), &makeModel()); },
            [this](AppModel&) { return std::make_unique<Windows>(*this); },
            [this](StatusItemController::Closures closures) {
                statusItem = std::move(closures);
                const auto life = std::make_shared<int>();
                statusItemLife = life;
                return life;
            },
            [this] { return kept; }, limitations});
        delegate->finishLaunching(request);
        time.settle();
        return *delegate;
    }
    bool press(int key, Qt::KeyboardModifiers modifiers, const QString& window = "control") {
        return events->handler({WindowEvent::Kind::keyDown, window, key, modifiers});
    }
    int terminations() const { return analytics.application.terminations; }
    std::string told() { return std::exchange(log, {}).join(' ').toStdString(); }

    QStringList log;
    bool hasBus = true;
    std::optional<QUrl> kept;
    QStringList limitations;
    std::shared_ptr<ScriptedRunningApplications> applications;
    std::shared_ptr<ScriptedEventMonitor> events = std::make_shared<ScriptedEventMonitor>();
    std::shared_ptr<CountingSleepInhibitor> sleepInhibitor = std::make_shared<CountingSleepInhibitor>();
    /// What the tray item was made with.
    std::optional<StatusItemController::Closures> statusItem;
    /// Lives while the tray item does.
    std::weak_ptr<void> statusItemLife;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace keldra::test
