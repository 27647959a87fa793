#pragma once

#include "platform/Screens.h"
#include "platform/WindowList.h"

#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <optional>

namespace keldra {

/// A window that can be picked; `bounds` in desktop points.
struct WindowCandidate {
    std::uint32_t windowID = 0;
    QRectF bounds;
    QString title;
    friend bool operator==(const WindowCandidate&, const WindowCandidate&) = default;
};

/// The ordinary, visible windows of other programs that are large enough to be worth recording, front to back.
QList<WindowCandidate> windowCandidates(const QList<WindowInfo>& windows);

/// Whether a pixel belongs to that rectangle, told by its upper left corner: a point on the left or upper edge is
/// inside, one on the right or lower edge is not. Desktop points.
bool holdsPixel(const QRectF& rect, QPointF corner);

/// The first that holds that pixel.
std::optional<WindowCandidate> windowAt(const QList<WindowCandidate>& windows, QPointF corner);
std::optional<Screen> screenAt(const QList<Screen>& screens, QPointF corner);

} // namespace keldra
