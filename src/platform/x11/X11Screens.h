#pragma once

#include "platform/Screens.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Monitors.h"

#include <memory>

namespace keldra {

class X11Screens final : public Screens {
public:
    /// `scaleFactor`: pixels per point, one for the whole desktop.
    X11Screens(std::shared_ptr<X11Connection> connection, std::shared_ptr<MonitorNumbers> numbers, double scaleFactor);
    QList<Screen> screens() const override;

private:
    PixelRect workArea(const PixelRect& monitor) const;

    std::shared_ptr<X11Connection> m_connection;
    std::shared_ptr<MonitorNumbers> m_numbers;
    double m_scaleFactor;
};

} // namespace keldra
