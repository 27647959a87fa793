// A window that tells what it shows, so that a recording of it can be judged by its pixels alone.
//
// From its top-left corner, in pixels (SceneLayout.h has the numbers, `keldra_scene --layout` prints them as JSON):
//
//   y 16   the frame's number: 24 bits and a parity bit, as blocks of 16x16, most significant first, white is 1
//   y 48   the host clock in milliseconds when it was painted, low 32 bits, in the same way
//   y 80   eight flat patches of 64x64, for colours
//   h/2    a texture that moves with every frame, down to the bottom
//
// All else is grey. With --log it prints "# window <id>", then a line "<number> <CLOCK_MONOTONIC microseconds>" for
// each frame, after the server has shown it, and "# click <CLOCK_MONOTONIC milliseconds>" for each button that is
// pressed on it.

#include "scene/SceneLayout.h"
#include "scene/SceneOptions.h"
#include "scene/ScenePainter.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <poll.h>
#include <unistd.h>

namespace keldra::scene {
namespace {

std::int64_t nowNanoseconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

xcb_atom_t atom(xcb_connection_t* connection, const char* name) {
    auto* answer = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, std::uint16_t(std::strlen(name)), name), nullptr);
    const xcb_atom_t value = answer != nullptr ? answer->atom : 0;
    std::free(answer);
    return value;
}

class SceneWindow {
public:
    SceneWindow(xcb_connection_t* connection, const xcb_screen_t& screen, const Options& options)
        : m_connection(connection)
        , m_screen(screen)
        , m_options(options)
        , m_window(xcb_generate_id(connection))
        , m_width(options.width > 0 ? options.width : screen.width_in_pixels)
        , m_height(options.height > 0 ? options.height : screen.height_in_pixels)
        , m_closeProtocol(atom(connection, "WM_DELETE_WINDOW")) {
        const std::uint32_t values[] = {backgroundRgb, !options.isManaged,
                                        XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                            (options.isLogging ? std::uint32_t(XCB_EVENT_MASK_BUTTON_PRESS) : 0U)};
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, screen.root, std::int16_t(options.x),
                          std::int16_t(options.y), std::uint16_t(m_width), std::uint16_t(m_height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        describe();
        xcb_map_window(connection, m_window);
        m_painter = makePainter();
    }

    xcb_window_t id() const { return m_window; }
    bool isClosed() const { return m_isClosed; }
    bool isOnScreen() const { return m_isMapped; }
    ScenePainter& painter() { return *m_painter; }

    /// Answers whether the last frame must be shown again.
    bool handleEvents() {
        bool isDirty = false;
        while (auto* event = xcb_poll_for_event(m_connection)) {
            isDirty |= handle(*event);
            std::free(event);
        }
        return isDirty;
    }

private:
    std::unique_ptr<ScenePainter> makePainter() const {
        return std::make_unique<ScenePainter>(m_connection, m_screen, m_window, m_width, m_height, m_options.colours);
    }

    void describe() const {
        const auto text = [this](xcb_atom_t property, xcb_atom_t type, const std::string& value) {
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, property, type, 8,
                                std::uint32_t(value.size()), value.data());
        };
        const auto numbers = [this](xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& value) {
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, property, type, 32,
                                std::uint32_t(value.size()), value.data());
        };
        text(atom(m_connection, "_NET_WM_NAME"), atom(m_connection, "UTF8_STRING"), m_options.title);
        text(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, std::string("keldra_scene\0KeldraScene\0", 25));
        numbers(atom(m_connection, "WM_PROTOCOLS"), XCB_ATOM_ATOM, {m_closeProtocol});
        numbers(atom(m_connection, "_NET_WM_PID"), XCB_ATOM_CARDINAL, {std::uint32_t(getpid())});
        // The user's own position and size, which a window manager keeps.
        std::vector<std::uint32_t> hints(18);
        hints[0] = 1 | 2;
        numbers(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
    }

    bool handle(const xcb_generic_event_t& event) {
        switch (event.response_type & 0x7f) {
        case XCB_EXPOSE:
            return true;
        case XCB_BUTTON_PRESS:
            logClick(reinterpret_cast<const xcb_button_press_event_t&>(event).time);
            return false;
        case XCB_MAP_NOTIFY:
            m_isMapped = true;
            return true;
        case XCB_DESTROY_NOTIFY:
            m_isClosed = true;
            return false;
        case XCB_CLIENT_MESSAGE:
            m_isClosed |= reinterpret_cast<const xcb_client_message_event_t&>(event).data.data32[0] == m_closeProtocol;
            return false;
        case XCB_CONFIGURE_NOTIFY: {
            const auto& configured = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            if (configured.width == m_width && configured.height == m_height)
                return false;
            m_width = configured.width;
            m_height = configured.height;
            m_painter = makePainter();
            return true;
        }
        default:
            return false;
        }
    }

    /// The server's time is the low half of CLOCK_MONOTONIC's milliseconds.
    static void logClick(xcb_timestamp_t time) {
        const std::int64_t now = nowNanoseconds() / 1'000'000;
        std::printf("# click %lld\n", static_cast<long long>(now - std::int32_t(std::uint32_t(now) - time)));
        std::fflush(stdout);
    }

    xcb_connection_t* m_connection;
    const xcb_screen_t& m_screen;
    const Options& m_options;
    xcb_window_t m_window;
    int m_width;
    int m_height;
    xcb_atom_t m_closeProtocol;
    std::unique_ptr<ScenePainter> m_painter;
    bool m_isMapped = false;
    bool m_isClosed = false;
};

/// Shows frames at their due times until the time is over or the window is closed.
void play(xcb_connection_t* connection, SceneWindow& window, const Options& options) {
    const std::int64_t start = nowNanoseconds();
    const auto period = std::int64_t(1e9 / options.rate);
    const std::int64_t end = options.seconds > 0 ? start + std::int64_t(options.seconds * 1e9) : INT64_MAX;
    std::int64_t due = start;
    std::uint32_t number = 0;
    bool isPainted = false;
    const auto showFrame = [&] {
        window.painter().paint(number, std::uint32_t(nowNanoseconds() / 1'000'000));
        window.painter().show();
        isPainted = true;
        if (options.isLogging)
            std::printf("%u %lld\n", number, static_cast<long long>(nowNanoseconds() / 1000));
        if (options.isLogging)
            std::fflush(stdout);
    };
    while (!window.isClosed() && xcb_connection_has_error(connection) == 0) {
        // Sending may bring events in, which the socket will not announce again.
        xcb_flush(connection);
        const bool isDirty = window.handleEvents();
        const std::int64_t now = nowNanoseconds();
        if (now >= end)
            return;
        const bool isDue = !options.isStill && window.isOnScreen() && now >= due;
        if (isDue) {
            number += isPainted ? 1 : 0;
            while (due <= now)
                due += period;
        }
        if (isDue || (isDirty && window.isOnScreen())) {
            showFrame();
            continue;
        }
        const std::int64_t wake = std::min(end, options.isStill || !window.isOnScreen() ? INT64_MAX : due);
        const timespec timeout{(wake - now) / 1'000'000'000, (wake - now) % 1'000'000'000};
        pollfd source{xcb_get_file_descriptor(connection), POLLIN, 0};
        ppoll(&source, 1, wake == INT64_MAX ? nullptr : &timeout, nullptr);
    }
}

int run(const Options& options) {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool isConnected = xcb_connection_has_error(connection) == 0;
    if (isConnected) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        SceneWindow window(connection, *screen, options);
        if (options.isLogging)
            std::printf("# window %u\n", window.id());
        play(connection, window, options);
    } else {
        std::fputs("keldra_scene: there is no X display: set DISPLAY\n", stderr);
    }
    xcb_disconnect(connection);
    return isConnected ? 0 : 1;
}

} // namespace
} // namespace keldra::scene

int main(int count, char** arguments) {
    using namespace keldra::scene;
    const std::optional<Options> options = parseOptions(count, arguments);
    if (!options)
        return 2;
    if (options->printsLayout) {
        std::puts(layoutJson().c_str());
        return 0;
    }
    return run(*options);
}
