#pragma once

#include <QColor>

namespace keldra {

/// The colours of the program's own look; views have them through Theme. One accent, on dark grounds that let a little
/// of the desktop through where a compositing manager allows it.
namespace palette {

inline constexpr QColor ground{0x17, 0x18, 0x1c, 0xe4};
/// Where nothing shows through.
inline constexpr QColor opaqueGround{0x1a, 0x1b, 0x20};
/// Of menus and hints, which lie over panels.
inline constexpr QColor menuGround{0x26, 0x28, 0x2f};
inline constexpr QColor hairline{0xff, 0xff, 0xff, 0x1c};
/// Of a control that rests, is pointed at, is pressed.
inline constexpr QColor fill{0xff, 0xff, 0xff, 0x12};
inline constexpr QColor fillHovered{0xff, 0xff, 0xff, 0x20};
inline constexpr QColor fillPressed{0xff, 0xff, 0xff, 0x2e};
inline constexpr QColor text{0xf4, 0xf4, 0xf6};
inline constexpr QColor secondaryText{0xa6, 0xa9, 0xb4};
inline constexpr QColor accent{0xff, 0x6b, 0x57};
/// On the accent.
inline constexpr QColor accentText{0x2a, 0x08, 0x04};
inline constexpr QColor success{0x5f, 0xd3, 0x9a};
inline constexpr QColor warning{0xff, 0xc1, 0x5c};

} // namespace palette
} // namespace keldra
