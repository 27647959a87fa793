#pragma once

#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <optional>

namespace keldra {

/// One monitor. Rectangles are desktop points: origin bottom left of the primary screen, y up, so that
/// QRectF::y() is the lower edge.
struct Screen {
    /// Given to a monitor's name at first sight, from 1, kept for the run.
    std::uint32_t number = 0;
    QString name;
    QRectF frame;
    /// The frame without panels and docks.
    QRectF visibleFrame;
    /// Pixels per point.
    double backingScaleFactor = 1;
    friend bool operator==(const Screen&, const Screen&) = default;
};

/// The monitors of the desktop. Any thread.
class Screens {
public:
    virtual ~Screens() = default;
    /// The primary first. Empty when the desktop does not answer.
    virtual QList<Screen> screens() const = 0;
};

/// The screen with that number.
inline std::optional<Screen> findScreen(const QList<Screen>& screens, std::uint32_t number) {
    for (const Screen& screen : screens)
        if (screen.number == number)
            return screen;
    return std::nullopt;
}

} // namespace keldra
