#include "platform/x11/X11ShareableContent.h"

#include "platform/x11/X11Error.h"

namespace keldra {

X11ShareableContent::X11ShareableContent(std::shared_ptr<Screens> screens, std::shared_ptr<WindowList> windows,
                                         Executor& mainQueue)
    : m_screens(std::move(screens)), m_windows(std::move(windows)), m_mainQueue(mainQueue) {}

void X11ShareableContent::current(Completion<ShareableContentSnapshot> done) {
    m_mainQueue.post([screens = m_screens, windows = m_windows, done = std::move(done)] {
        ShareableContentSnapshot snapshot;
        for (const Screen& screen : screens->screens())
            snapshot.displays.append({screen.number, screen.frame});
        for (const WindowInfo& window : windows->windows())
            snapshot.windows.append({window.windowID, window.frame});
        if (snapshot.displays.isEmpty()) {
            done(fail(x11Error(X11ErrorCode::connectionLost, "The X display does not answer.")));
            return;
        }
        done(std::move(snapshot));
    });
}

} // namespace keldra
