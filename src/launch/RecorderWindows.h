#pragma once

#include <QUrl>

namespace keldra {

/// The windows of the recorder, as start-up and the end of the program need them. Main thread.
class RecorderWindows {
public:
    virtual ~RecorderWindows() = default;
    /// Shows what the model's state asks for.
    virtual void show() = 0;
    virtual void hidePanels() = 0;
    /// Lets the user pick a movie to be edited.
    virtual void openVideoPicker() = 0;
    virtual void openEditor(const QUrl& movie) = 0;
    /// The user has hidden the panels.
    virtual bool isHiddenFromMenuBar() const = 0;
    virtual void setIsHiddenFromMenuBar(bool isHidden) = 0;
};

} // namespace keldra
