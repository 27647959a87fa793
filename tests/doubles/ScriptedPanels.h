#pragma once

#include "async/AwaitCompletion.h"
#include "capture_ui/WindowCoordinator.h"
#include "doubles/Answers.h"

#include <map>

namespace keldra::test {

/// A panel on nobody's screen.
class ScriptedPanel final : public Panel {
public:
    explicit ScriptedPanel(QString& keyPanel, QString identifier) : m_keyPanel(keyPanel), name(std::move(identifier)) {}

    QRectF frame() const override { return place; }
    void setOrigin(QPointF origin) override { place.moveTopLeft(origin); }
    void setContentSize(QSizeF size) override { place.setSize(size); }
    void orderFront() override { visible = true; }
    void makeKeyAndOrderFront() override {
        visible = true;
        m_keyPanel = name;
    }
    void orderOut() override { visible = false; }
    bool isVisible() const override { return visible; }
    void setSharingType(SharingType sharingType) override { sharing = sharingType; }

    /// As a user's drag does.
    void drag(QPointF origin) {
        setOrigin(origin);
        Q_EMIT moved();
    }

private:
    QString& m_keyPanel;

public:
    const QString name;
    QRectF place;
    bool visible = false;
    SharingType sharing = SharingType::readOnly;
};

/// The recorder's panels as a test sees them; outlives the coordinator that owns them.
struct PanelScript {
    RecorderPanels make() {
        const auto panel = [this](ScriptedPanel*& seen, const char* name) {
            auto made = std::make_unique<ScriptedPanel>(keyPanel, QLatin1String(name));
            seen = made.get();
            all.append(seen);
            return made;
        };
        all.clear();
        RecorderPanels panels;
        panels.control = panel(control, "control");
        panels.webcam = panel(webcam, "webcam");
        panels.settings = panel(settings, "settings");
        panels.closeConfirmation = panel(closeConfirmation, "confirm");
        panels.selectionRequired = panel(selectionRequired, "required");
        panels.notice = panel(notice, "notice");
        panels.recordingTimer = panel(recordingTimer, "timer");
        panels.postRecording = panel(postRecording, "saved");
        return panels;
    }
    /// Their names, in the order above.
    QString visible() const {
        return names([](const ScriptedPanel& panel) { return panel.visible; });
    }
    /// Those that recordings must not see.
    QString unshared() const {
        return names([](const ScriptedPanel& panel) { return panel.sharing == SharingType::none; });
    }

    QList<ScriptedPanel*> all;
    /// The last one that was given the keyboard.
    QString keyPanel;
    ScriptedPanel* control = nullptr;
    ScriptedPanel* webcam = nullptr;
    ScriptedPanel* settings = nullptr;
    ScriptedPanel* closeConfirmation = nullptr;
    ScriptedPanel* selectionRequired = nullptr;
    ScriptedPanel* notice = nullptr;
    ScriptedPanel* recordingTimer = nullptr;
    ScriptedPanel* postRecording = nullptr;

private:
    template <typename Predicate>
    QString names(Predicate predicate) const {
        QStringList found;
        for (const ScriptedPanel* panel : all)
            if (predicate(*panel))
                found.append(panel->name);
        return found.join(' ');
    }
};

/// The overlays as a test sees and steers them; outlives them.
struct OverlayScript {
    explicit OverlayScript(Executor& mainQueue) : selections(mainQueue), countdowns(mainQueue) {}

    Answers selections;
    Answers countdowns;
    std::optional<CaptureSelection> picked;
    QStringList asked;
    QList<int> countdownSeconds;
    std::optional<CaptureSelection> preview;
    std::function<void(QRectF)> onRegionChange;
    std::function<void()> onCancelPreview;
    bool effects = false;
};

class ScriptedSelection final : public SelectionCoordinator {
public:
    explicit ScriptedSelection(OverlayScript& script) : m_script(script) {}
    QCoro::Task<std::optional<CaptureSelection>> selectRegion() override { return select(QStringLiteral("region")); }
    QCoro::Task<std::optional<CaptureSelection>> selectWindow() override { return select(QStringLiteral("window")); }
    QCoro::Task<std::optional<CaptureSelection>> selectDisplay(std::uint32_t preferredDisplayID) override {
        return select(QStringLiteral("display %1").arg(preferredDisplayID));
    }

private:
    QCoro::Task<std::optional<CaptureSelection>> select(QString what) {
        OverlayScript& script = m_script;
        script.asked.append(what);
        (void)co_await awaitCompletion<void>(
            [&](Completion<void> done) { script.selections.add([done = std::move(done)] { done({}); }); });
        co_return script.picked;
    }
    OverlayScript& m_script;
};

class ScriptedPreview final : public SelectionPreviewCoordinator {
public:
    explicit ScriptedPreview(OverlayScript& script) : m_script(script) {}
    void show(const CaptureSelection& selection, std::function<void(QRectF)> onRegionChange,
              std::function<void()> onCancel) override {
        m_script.preview = selection;
        m_script.onRegionChange = std::move(onRegionChange);
        m_script.onCancelPreview = std::move(onCancel);
    }
    void hide() override { m_script.preview.reset(); }

private:
    OverlayScript& m_script;
};

class ScriptedCountdown final : public CountdownCoordinator {
public:
    explicit ScriptedCountdown(OverlayScript& script) : m_script(script) {}
    QCoro::Task<> run(int seconds) override {
        OverlayScript& script = m_script;
        script.countdownSeconds.append(seconds);
        (void)co_await awaitCompletion<void>(
            [&](Completion<void> done) { script.countdowns.add([done = std::move(done)] { done({}); }); });
    }

private:
    OverlayScript& m_script;
};

class ScriptedEffectsOverlay final : public CursorEffectsOverlayCoordinator {
public:
    explicit ScriptedEffectsOverlay(OverlayScript& script) : m_script(script) {}
    void show() override { m_script.effects = true; }
    void drop() override { m_script.effects = false; }
    void setPaused(bool) override {}

private:
    OverlayScript& m_script;
};

/// Events that a test makes up.
class ScriptedEvents final : public EventMonitor {
public:
    Watch watch(WindowEvent::Kind kind, Handler handler) override {
        auto entry = std::make_shared<Entry>(Entry{kind, std::move(handler)});
        m_entries.push_back(entry);
        return entry;
    }
    /// Whether somebody has kept it.
    bool send(const WindowEvent& event) {
        for (const auto& each : std::vector(m_entries))
            if (const auto entry = each.lock(); entry && entry->kind == event.kind && entry->handler(event))
                return true;
        return false;
    }
    bool isWatched() const {
        return std::any_of(m_entries.begin(), m_entries.end(), [](const auto& each) { return !each.expired(); });
    }

private:
    struct Entry {
        WindowEvent::Kind kind;
        Handler handler;
    };
    std::vector<std::weak_ptr<Entry>> m_entries;
};

} // namespace keldra::test
