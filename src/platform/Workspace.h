#pragma once

#include <QUrl>

namespace keldra {

/// A page of the desktop's own settings.
enum class SettingsPage { screenCapture, camera, microphone };

/// What the desktop opens and shows for us. Nothing here answers; what it cannot do is left undone. Main thread.
class Workspace {
public:
    virtual ~Workspace() = default;
    /// Shows the file in the desktop's file manager, selected.
    virtual void reveal(const QUrl& file) = 0;
    /// Whether this desktop has such a page that we know of.
    virtual bool hasSettings(SettingsPage page) const = 0;
    virtual void openSettings(SettingsPage page) = 0;
};

} // namespace keldra
