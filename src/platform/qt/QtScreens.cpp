#include "platform/qt/QtScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace keldra {
namespace {

/// Qt counts down from the upper edge of its desktop, we up from the lower edge of the primary monitor.
QRectF turned(const QRect& rect, const QRect& primary) {
    return {double(rect.x() - primary.x()), double(primary.y() + primary.height() - rect.y() - rect.height()),
            double(rect.width()), double(rect.height())};
}

} // namespace

QtScreens::QtScreens() {
    read();
    // Monitors come, go and change without asking; whoever reads gets the latest.
    QObject::connect(qApp, &QGuiApplication::screenAdded, &m_listener, [this](const QScreen* screen) {
        QObject::connect(screen, &QScreen::geometryChanged, &m_listener, [this] { read(); });
        read();
    });
    QObject::connect(qApp, &QGuiApplication::screenRemoved, &m_listener, [this] { read(); });
    QObject::connect(qApp, &QGuiApplication::primaryScreenChanged, &m_listener, [this] { read(); });
    for (const QScreen* screen : QGuiApplication::screens())
        QObject::connect(screen, &QScreen::geometryChanged, &m_listener, [this] { read(); });
}

QList<Screen> QtScreens::screens() const {
    const std::lock_guard guard(m_lock);
    return m_screens;
}

void QtScreens::read() {
    QList<QScreen*> there = QGuiApplication::screens();
    const QScreen* primary = QGuiApplication::primaryScreen();
    std::stable_partition(there.begin(), there.end(), [&](const QScreen* each) { return each == primary; });
    QList<Screen> screens;
    for (const QScreen* each : there) {
        auto number = m_numbers.find(each->name());
        if (number == m_numbers.end())
            number = m_numbers.insert(each->name(), std::uint32_t(m_numbers.size() + 1));
        screens.append({*number, each->name(), turned(each->geometry(), primary->geometry()),
                        turned(each->availableGeometry(), primary->geometry()), each->devicePixelRatio()});
    }
    const std::lock_guard guard(m_lock);
    m_screens = screens;
}

} // namespace keldra
