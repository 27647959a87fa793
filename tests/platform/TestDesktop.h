#pragma once

#include "base/SerialQueue.h"
#include "doubles/ChildProcess.h"
#include "doubles/PumpedExecutor.h"
#include "platform/Platform.h"
#include "platform/x11/X11Connection.h"
#include "scene/SceneReader.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace keldra {

/// The hands of the test: changes the desktop as its user would.
class TestDesktop {
public:
    struct Monitor {
        const char* name;
        PixelRect rect;
    };

    TestDesktop();
    ~TestDesktop();

    const X11Connection& x() const { return *m_connection; }
    bool hasWindowManager() const;
    /// Whether somebody else paints what is on the screen, later than the windows change.
    bool isComposited() const;
    /// Divides the screen; the first is the primary one. None: the server's own single one.
    void setMonitors(const std::vector<Monitor>& monitors);
    void removeMonitor(const std::string& name);
    void warpPointer(int x, int y) const;
    void moveWindow(xcb_window_t window, int x, int y) const;
    void resizeWindow(xcb_window_t window, int width, int height) const;
    void unmapWindow(xcb_window_t window) const;
    void mapWindow(xcb_window_t window) const;
    bool isViewable(xcb_window_t window) const;
    /// Whether it is in a window manager's frame.
    bool isFramed(xcb_window_t window) const;
    /// A window of this process, of one colour.
    xcb_window_t makeOwnWindow(const PixelRect& rect, std::uint32_t rgb, bool isManaged) const;
    void destroyWindow(xcb_window_t window) const;
    void setNumbers(xcb_window_t window, const char* property, xcb_atom_t type,
                    const std::vector<std::uint32_t>& numbers) const;
    xcb_atom_t atom(const char* name) const;
    /// The borders that the window manager put around it: left, right, top, bottom.
    std::vector<int> decoration(xcb_window_t window) const;
    /// Root pixels, without decoration.
    PixelRect clientRect(xcb_window_t window) const;

private:
    std::shared_ptr<X11Connection> m_connection;
    std::vector<std::string> m_monitors;
};

/// A keldra_scene in a process of its own.
class SceneProcess {
public:
    explicit SceneProcess(const std::vector<std::string>& arguments);
    /// 0 when it did not come up.
    xcb_window_t window() const { return m_window; }
    void close() { m_process.close(); }

private:
    ChildProcess m_process;
    xcb_window_t m_window = 0;
};

/// Runs a stream and keeps its last frame.
class StreamRun {
public:
    /// `inspector` looks at every frame, on the stream's queue.
    StreamRun(const Platform& platform, PumpedExecutor& mainQueue, const StreamConfiguration& configuration,
              std::function<void(const ScreenFrame&)> inspector = nullptr);
    ~StreamRun();

    const std::optional<Error>& startError() const { return m_startError; }
    /// Waits for a frame that the predicate likes, among those that come from now on and the last one.
    [[nodiscard]] bool waitFor(const std::function<bool(const ScreenFrame&)>& predicate);
    [[nodiscard]] bool waitForCount(std::size_t count);
    [[nodiscard]] bool waitForStop();
    /// Whether frames are held on to, all of them.
    void hold(bool isHolding);
    void stop();

    ScreenFrame last() const;
    std::size_t count() const;
    std::vector<MediaTime> times() const;
    std::vector<Error> stops() const;

private:
    void take(ScreenFrame frame);

    PumpedExecutor& m_mainQueue;
    mutable std::mutex m_lock;
    std::condition_variable m_arrived;
    ScreenFrame m_last;
    std::vector<MediaTime> m_times;
    std::vector<Error> m_stops;
    std::vector<ScreenFrame> m_held;
    bool m_isHolding = false;
    const std::function<void(const ScreenFrame&)> m_inspector;
    std::optional<Error> m_startError;
    SerialQueue m_queue{"test frames"};
    std::unique_ptr<ScreenStream> m_stream;
};

/// Asks again until the answer is right; the desktop changes in its own time.
[[nodiscard]] bool eventually(const std::function<bool()>& predicate);

} // namespace keldra
