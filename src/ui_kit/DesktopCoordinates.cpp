#include "ui_kit/DesktopCoordinates.h"

#include "ui_kit/X11WindowManagement.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Exact sizes come from the server: Qt's are rounded to its own whole units.
QRect rootRectOf(const QScreen& screen, const std::vector<QRect>& known) {
    const QRect qt = screen.geometry();
    const auto found =
        std::find_if(known.begin(), known.end(), [&](const QRect& rect) { return rect.topLeft() == qt.topLeft(); });
    if (found != known.end())
        return *found;
    return {qt.topLeft(), (QSizeF(qt.size()) * screen.devicePixelRatio()).toSize()};
}

double squaredDistance(const QRect& rect, const QPointF& place) {
    const double x = std::max({rect.x() - place.x(), 0.0, place.x() - (rect.x() + rect.width())});
    const double y = std::max({rect.y() - place.y(), 0.0, place.y() - (rect.y() + rect.height())});
    return x * x + y * y;
}

bool holds(const QRect& rect, const QPointF& place) {
    return place.x() >= rect.x() && place.x() < rect.x() + rect.width() && place.y() >= rect.y() &&
           place.y() < rect.y() + rect.height();
}

int nearestWhole(double value) {
    return int(std::lround(value));
}

} // namespace

DesktopCoordinates::DesktopCoordinates(std::vector<Monitor> monitors, double factor)
    : m_monitors(std::move(monitors)), m_factor(factor) {
    if (m_monitors.empty())
        m_monitors.push_back({});
    const auto primary =
        std::find_if(m_monitors.begin(), m_monitors.end(), [](const Monitor& m) { return m.isPrimary; });
    if (primary != m_monitors.end())
        std::rotate(m_monitors.begin(), primary, primary + 1);
}

DesktopCoordinates DesktopCoordinates::current() {
    const std::vector<QRect> known = rootRectsOfMonitors();
    std::vector<Monitor> monitors;
    double factor = 1;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const bool isPrimary = screen == QGuiApplication::primaryScreen();
        monitors.push_back({rootRectOf(*screen, known), screen->geometry(), isPrimary});
        if (isPrimary)
            factor = screen->devicePixelRatio();
    }
    return {std::move(monitors), factor};
}

/// Where the origin of points lies: the pixel corner at the bottom left of the primary monitor.
QPointF DesktopCoordinates::originInRoot() const {
    const QRect& primary = m_monitors.front().root;
    return QPointF(primary.x(), primary.y() + primary.height());
}

const DesktopCoordinates::Monitor* DesktopCoordinates::nearest(const QPointF& place, QRect Monitor::*space) const {
    const Monitor* best = &m_monitors.front();
    for (const Monitor& monitor : m_monitors) {
        if (holds(monitor.*space, place))
            return &monitor;
        if (squaredDistance(monitor.*space, place) < squaredDistance(best->*space, place))
            best = &monitor;
    }
    return best;
}

QRect DesktopCoordinates::toQt(const QRectF& points) const {
    const QPointF origin = originInRoot();
    const QPointF corner(origin.x() + points.x() * m_factor, origin.y() - (points.y() + points.height()) * m_factor);
    const QPointF centre = corner + QPointF(points.width(), points.height()) * (m_factor / 2);
    const QPointF screen = nearest(centre, &Monitor::root)->root.topLeft();
    const QPointF placed = screen + (corner - screen) / m_factor;
    return {nearestWhole(placed.x()), nearestWhole(placed.y()), nearestWhole(points.width()),
            nearestWhole(points.height())};
}

QRectF DesktopCoordinates::toPoints(const QRect& windowGeometry) const {
    const QPointF screen = nearest(QRectF(windowGeometry).center(), &Monitor::qt)->root.topLeft();
    const QPointF corner = (screen - originInRoot()) / m_factor + (QPointF(windowGeometry.topLeft()) - screen);
    return {corner.x(), -corner.y() - windowGeometry.height(), double(windowGeometry.width()),
            double(windowGeometry.height())};
}

QPointF DesktopCoordinates::toPoints(const QPointF& globalPosition) const {
    const QPointF screen = nearest(globalPosition, &Monitor::qt)->root.topLeft();
    const QPointF place = (screen - originInRoot()) / m_factor + (globalPosition - screen);
    return {place.x(), -place.y()};
}

QRect DesktopCoordinates::toRoot(const QRectF& points) const {
    const QPointF origin = originInRoot();
    const int left = nearestWhole(origin.x() + points.x() * m_factor);
    const int right = nearestWhole(origin.x() + (points.x() + points.width()) * m_factor);
    const int top = nearestWhole(origin.y() - (points.y() + points.height()) * m_factor);
    const int bottom = nearestWhole(origin.y() - points.y() * m_factor);
    return {left, top, right - left, bottom - top};
}

QRectF unionOfFrames(const QList<Screen>& screens) {
    QRectF whole;
    for (const Screen& screen : screens)
        whole = whole.united(screen.frame);
    return whole;
}

} // namespace keldra
