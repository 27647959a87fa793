#pragma once

#include "platform/OwnWindows.h"
#include "ui_kit/Theme.h"

#include <QQmlEngine>

#include <memory>

namespace keldra {

class HintWindow;

/// What all views of the program share: the engine that runs them, the look, the hints. One for the program, made after
/// the QGuiApplication. Main thread.
class UiKit {
public:
    /// `recordingsSeeAllWindows`: this desktop cannot leave our windows out of a recording.
    explicit UiKit(std::shared_ptr<OwnWindows> ownWindows, bool recordingsSeeAllWindows = false);
    ~UiKit();

    /// Chooses how views are drawn. Before the first window; what the environment says goes first.
    static void chooseRenderer();

    QQmlEngine& engine() { return m_engine; }
    Theme& theme() { return m_theme; }
    const std::shared_ptr<OwnWindows>& ownWindows() const { return m_ownWindows; }
    bool recordingsSeeAllWindows() const { return m_recordingsSeeAllWindows; }
    /// Looks whether there is a compositing manager now.
    void refreshTheme();

private:
    const std::shared_ptr<OwnWindows> m_ownWindows;
    const bool m_recordingsSeeAllWindows;
    Theme m_theme;
    QQmlEngine m_engine;
    /// Belongs to the engine's views.
    std::unique_ptr<HintWindow> m_hints;
};

} // namespace keldra
