#pragma once

#include "ui_kit/Overlay.h"

#include <memory>
#include <optional>

namespace keldra {

/// How a number of the countdown stands on the screen, some time after its tick.
struct CountdownLook {
    double opacity = 1;
    double scale = 1;
    /// Of the number before.
    double leavingOpacity = 0;
    friend bool operator==(const CountdownLook&, const CountdownLook&) = default;
};

/// Seconds from a tick until its number stands still.
inline constexpr double countdownTransition = 0.32;
CountdownLook countdownLook(double secondsSinceTick);

/// A large number in the middle of the desktop.
class CountdownView final : public OverlayView {
public:
    /// Shows itself over that part of the desktop.
    void open(Overlays& overlays, const QRectF& frame);
    /// The next number, which begins its transition.
    void tick(int number);
    void setTimeSinceTick(double seconds);

    void paint(QPainter& painter, const ViewSpace& space) override;
    QPainterPath shape(const ViewSpace& space) const override;

private:
    void repaint();

    QRectF m_frame;
    std::optional<int> m_number;
    std::optional<int> m_leavingNumber;
    CountdownLook m_look;
    bool m_isTranslucent = true;
    std::unique_ptr<Overlay> m_overlay;
};

} // namespace keldra
