#pragma once

#include <QIcon>

namespace keldra {

/// The program's mark for a tray. An installed one goes by its name, so that desktops which tint such marks do; else it
/// is drawn, sharp at the sizes of trays, light with a dark rim, as nobody says how dark a tray is.
QIcon trayMark();

} // namespace keldra
