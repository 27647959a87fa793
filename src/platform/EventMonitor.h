#pragma once

#include <QString>
#include <Qt>

#include <functional>
#include <memory>

namespace keldra {

/// The property of a window's object that holds the window's identifier.
inline constexpr char windowIdentifierProperty[] = "keldra.identifier";

/// Something the user did in one of this program's windows.
struct WindowEvent {
    enum class Kind {
        /// Of any button.
        mouseUp,
        keyDown,
    };
    Kind kind = Kind::mouseUp;
    /// The window's identifier, as OwnWindows has it.
    QString window;
    /// A Qt::Key; 0 for the mouse.
    int key = 0;
    Qt::KeyboardModifiers modifiers{};
    friend bool operator==(const WindowEvent&, const WindowEvent&) = default;
};

/// Sees events of this program's own windows before those windows do. Main thread.
class EventMonitor {
public:
    /// Answers whether the event ends here.
    using Handler = std::function<bool(const WindowEvent&)>;
    /// Destroying it ends the watch; it may outlive the monitor.
    using Watch = std::shared_ptr<void>;

    virtual ~EventMonitor() = default;
    [[nodiscard]] virtual Watch watch(WindowEvent::Kind kind, Handler handler) = 0;
};

} // namespace keldra
