#include "platform/TestDesktop.h"

#include "platform/x11/X11Properties.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace keldra {

TestDesktop::TestDesktop() {
    auto connection = X11Connection::open();
    if (!connection)
        throw std::runtime_error(connection.error().message);
    m_connection = *connection;
}

TestDesktop::~TestDesktop() {
    setMonitors({});
}

bool TestDesktop::hasWindowManager() const {
    return !readNumbers(x(), askProperty(x(), x().root(), x().atoms().supportingWindowManager)).empty();
}

bool TestDesktop::isComposited() const {
    const auto owner =
        x().reply(xcb_get_selection_owner_reply, xcb_get_selection_owner(x().raw(), x().atoms().compositingManager));
    return owner->owner != XCB_WINDOW_NONE;
}

xcb_atom_t TestDesktop::atom(const char* name) const {
    return x()
        .reply(xcb_intern_atom_reply, xcb_intern_atom(x().raw(), 0, std::uint16_t(std::strlen(name)), name))
        ->atom;
}

namespace {

/// libxcb's own request for this ends the connection.
void xrandr(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "xrandr");
    if (ChildProcess(arguments).wait() != 0)
        throw std::runtime_error("xrandr failed");
}

} // namespace

void TestDesktop::setMonitors(const std::vector<Monitor>& monitors) {
    for (const std::string& name : std::exchange(m_monitors, {}))
        xrandr({"--delmonitor", name});
    for (const auto& [name, rect] : monitors) {
        // The first takes the server's own output, or that would stay a monitor too; the star makes it primary.
        const bool isFirst = m_monitors.empty();
        const std::string place = std::to_string(rect.width) + "/300x" + std::to_string(rect.height) + "/200+" +
                                  std::to_string(rect.x) + "+" + std::to_string(rect.y);
        xrandr({"--setmonitor", std::string(isFirst ? "*" : "") + name, place, isFirst ? "screen" : "none"});
        m_monitors.emplace_back(name);
    }
}

void TestDesktop::removeMonitor(const std::string& name) {
    xrandr({"--delmonitor", name});
    std::erase(m_monitors, name);
}

void TestDesktop::warpPointer(int toX, int toY) const {
    xcb_warp_pointer(x().raw(), XCB_WINDOW_NONE, x().root(), 0, 0, 0, 0, std::int16_t(toX), std::int16_t(toY));
    x().roundTrip();
}

void TestDesktop::moveWindow(xcb_window_t window, int toX, int toY) const {
    const std::uint32_t values[] = {std::uint32_t(toX), std::uint32_t(toY)};
    xcb_configure_window(x().raw(), window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    x().roundTrip();
}

void TestDesktop::resizeWindow(xcb_window_t window, int width, int height) const {
    const std::uint32_t values[] = {std::uint32_t(width), std::uint32_t(height)};
    xcb_configure_window(x().raw(), window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    x().roundTrip();
}

void TestDesktop::unmapWindow(xcb_window_t window) const {
    xcb_unmap_window(x().raw(), window);
    x().roundTrip();
}

void TestDesktop::mapWindow(xcb_window_t window) const {
    xcb_map_window(x().raw(), window);
    x().roundTrip();
}

bool TestDesktop::isViewable(xcb_window_t window) const {
    const auto attributes = x().reply(xcb_get_window_attributes_reply, xcb_get_window_attributes(x().raw(), window));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool TestDesktop::isFramed(xcb_window_t window) const {
    const auto tree = x().reply(xcb_query_tree_reply, xcb_query_tree(x().raw(), window));
    return tree && tree->parent != x().root();
}

xcb_window_t TestDesktop::makeOwnWindow(const PixelRect& rect, std::uint32_t rgb, bool isManaged) const {
    const xcb_window_t window = x().newID();
    const std::uint32_t values[] = {rgb, !isManaged};
    xcb_create_window(x().raw(), XCB_COPY_FROM_PARENT, window, x().root(), std::int16_t(rect.x), std::int16_t(rect.y),
                      std::uint16_t(rect.width), std::uint16_t(rect.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    std::vector<std::uint32_t> hints(18);
    hints[0] = 1 | 2;
    setNumbers(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, hints);
    x().roundTrip();
    return window;
}

void TestDesktop::destroyWindow(xcb_window_t window) const {
    xcb_destroy_window(x().raw(), window);
    x().roundTrip();
}

void TestDesktop::setNumbers(xcb_window_t window, const char* property, xcb_atom_t type,
                             const std::vector<std::uint32_t>& numbers) const {
    xcb_change_property(x().raw(), XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                        std::uint32_t(numbers.size()), numbers.data());
    x().roundTrip();
}

std::vector<int> TestDesktop::decoration(xcb_window_t window) const {
    const auto numbers = readNumbers(x(), askProperty(x(), window, atom("_NET_FRAME_EXTENTS")));
    return numbers.size() == 4 ? std::vector<int>(numbers.begin(), numbers.end()) : std::vector<int>(4);
}

PixelRect TestDesktop::clientRect(xcb_window_t window) const {
    const auto geometry = x().reply(xcb_get_geometry_reply, xcb_get_geometry(x().raw(), window));
    const auto corner =
        x().reply(xcb_translate_coordinates_reply, xcb_translate_coordinates(x().raw(), window, x().root(), 0, 0));
    return {corner->dst_x, corner->dst_y, geometry->width, geometry->height};
}

namespace {

std::vector<std::string> sceneCommand(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{KELDRA_SCENE, "--log"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

} // namespace

SceneProcess::SceneProcess(const std::vector<std::string>& arguments) : m_process(sceneCommand(arguments)) {
    constexpr std::string_view announcement = "# window ";
    const std::string line = m_process.readLine();
    // The first frame's line comes once it is on the screen.
    if (line.starts_with(announcement) && !m_process.readLine().empty())
        m_window = xcb_window_t(std::stoul(line.substr(announcement.size())));
}

StreamRun::StreamRun(const Platform& platform, PumpedExecutor& mainQueue, const StreamConfiguration& configuration,
                     std::function<void(const ScreenFrame&)> inspector)
    : m_mainQueue(mainQueue), m_inspector(std::move(inspector)), m_stream(platform.makeScreenStream()) {
    FrameSink sink;
    sink.frame = [this](ScreenFrame frame) { take(std::move(frame)); };
    sink.stopped = [this](const Error& error) {
        const std::lock_guard guard(m_lock);
        m_stops.push_back(error);
        m_arrived.notify_all();
    };
    bool isAnswered = false;
    m_stream->start(configuration, m_queue, sink, [&](const Result<void>& result) {
        isAnswered = true;
        if (!result)
            m_startError = result.error();
    });
    if (isAnswered || !mainQueue.pumpUntil([&] { return isAnswered; }))
        throw std::runtime_error("start() must answer once, later");
}

StreamRun::~StreamRun() {
    m_stream.reset();
    m_queue.sync([] {});
}

void StreamRun::take(ScreenFrame frame) {
    if (m_inspector)
        m_inspector(frame);
    const std::lock_guard guard(m_lock);
    if (m_isHolding)
        m_held.push_back(frame);
    m_times.push_back(frame.time);
    m_last = std::move(frame);
    m_arrived.notify_all();
}

bool StreamRun::waitFor(const std::function<bool(const ScreenFrame&)>& predicate) {
    std::unique_lock guard(m_lock);
    return m_arrived.wait_until(guard, PumpedExecutor::deadline(), [&] { return m_last.pixels && predicate(m_last); });
}

bool StreamRun::waitForCount(std::size_t count) {
    std::unique_lock guard(m_lock);
    return m_arrived.wait_until(guard, PumpedExecutor::deadline(), [&] { return m_times.size() >= count; });
}

bool StreamRun::waitForStop() {
    std::unique_lock guard(m_lock);
    return m_arrived.wait_until(guard, PumpedExecutor::deadline(), [&] { return !m_stops.empty(); });
}

void StreamRun::hold(bool isHolding) {
    const std::lock_guard guard(m_lock);
    m_isHolding = isHolding;
    if (!isHolding) {
        m_held.clear();
        m_last = {};
    }
}

void StreamRun::stop() {
    bool isAnswered = false;
    m_stream->stop([&](const Result<void>& result) { isAnswered = result.has_value(); });
    if (isAnswered || !m_mainQueue.pumpUntil([&] { return isAnswered; }))
        throw std::runtime_error("stop() must answer once, later");
}

ScreenFrame StreamRun::last() const {
    const std::lock_guard guard(m_lock);
    return m_last;
}

std::size_t StreamRun::count() const {
    const std::lock_guard guard(m_lock);
    return m_times.size();
}

std::vector<MediaTime> StreamRun::times() const {
    const std::lock_guard guard(m_lock);
    return m_times;
}

std::vector<Error> StreamRun::stops() const {
    const std::lock_guard guard(m_lock);
    return m_stops;
}

bool eventually(const std::function<bool()>& predicate) {
    const auto deadline = std::chrono::steady_clock::now() + PumpedExecutor::patience;
    while (!predicate()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return true;
}

} // namespace keldra
