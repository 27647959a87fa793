#pragma once

#include "platform/OwnWindows.h"

#include <QUrl>

#include <functional>
#include <memory>

namespace keldra {

/// The window that edits one movie, as those see it who open it. Destroying it closes it. Main thread.
class EditorWindow {
public:
    virtual ~EditorWindow() = default;
    /// Shows it above all others and gives it the keyboard.
    virtual void bringToFront() = 0;
    virtual void setSharingType(SharingType sharingType) = 0;
};

/// Opens that movie, out of sight at first. `closed` runs once, when the user has closed the window, and may destroy
/// it. May be empty: then this program cannot edit.
using EditorWindowFactory =
    std::function<std::unique_ptr<EditorWindow>(QUrl movie, bool hasLiveClickTrack, std::function<void()> closed)>;

} // namespace keldra
