#pragma once

class QWindow;

namespace keldra {

/// Whether this desktop lets a program say where its windows stand, and keep them above others. Wayland does not: there
/// a program places nothing but popups, and those beside the window that they belong to. Main thread.
bool canPlaceWindows();

/// Where the desktop places windows: has it leave this one at its size, which it may otherwise take for one that fills
/// a part of the screen. Elsewhere nothing.
void keepSize(QWindow& window);

} // namespace keldra
