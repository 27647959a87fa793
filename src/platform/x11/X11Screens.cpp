#include "platform/x11/X11Screens.h"

#include "platform/x11/DesktopSpace.h"
#include "platform/x11/X11Properties.h"

namespace keldra {

X11Screens::X11Screens(std::shared_ptr<X11Connection> connection, std::shared_ptr<MonitorNumbers> numbers,
                       double scaleFactor)
    : m_connection(std::move(connection)), m_numbers(std::move(numbers)), m_scaleFactor(scaleFactor) {}

QList<Screen> X11Screens::screens() const {
    const std::vector<X11Monitor> monitors = readMonitors(*m_connection);
    if (monitors.empty())
        return {};
    const DesktopSpace space{m_scaleFactor, monitors.front().rect};
    QList<Screen> screens;
    for (const X11Monitor& monitor : monitors) {
        Screen screen;
        screen.number = m_numbers->numberOf(monitor.name);
        screen.name = QString::fromStdString(monitor.name);
        screen.frame = space.toPoints(monitor.rect);
        screen.visibleFrame = space.toPoints(workArea(monitor.rect));
        screen.backingScaleFactor = m_scaleFactor;
        screens.append(screen);
    }
    return screens;
}

/// The part of the monitor that no panel covers; the whole of it when nobody tells.
PixelRect X11Screens::workArea(const PixelRect& monitor) const {
    const X11Atoms& atoms = m_connection->atoms();
    const auto areaRequest = askProperty(*m_connection, m_connection->root(), atoms.workArea);
    const auto desktopRequest = askProperty(*m_connection, m_connection->root(), atoms.currentDesktop);
    const std::vector<std::uint32_t> areas = readNumbers(*m_connection, areaRequest);
    const std::vector<std::uint32_t> desktop = readNumbers(*m_connection, desktopRequest);
    // One rectangle of four numbers for each virtual desktop.
    std::size_t first = desktop.empty() ? 0 : 4 * std::size_t(desktop.front());
    if (first + 4 > areas.size())
        first = 0;
    if (areas.size() < 4)
        return monitor;
    const PixelRect area{int(areas[first]), int(areas[first + 1]), int(areas[first + 2]), int(areas[first + 3])};
    const PixelRect part = monitor.intersection(area);
    return part.isEmpty() ? monitor : part;
}

} // namespace keldra
