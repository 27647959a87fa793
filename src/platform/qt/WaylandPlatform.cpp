#include "platform/qt/WaylandPlatform.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <mutex>

namespace keldra {
namespace {

/// The primary screen's height is where y is turned round.
QRectF toPoints(const QRect& rect, const QRect& primary) {
    return QRectF(rect.x(), primary.y() + primary.height() - rect.y() - rect.height(), rect.width(), rect.height());
}

/// What Qt knows, copied on main whenever it changes, so that any thread can read it.
class QtScreens final : public QObject, public Screens {
public:
    QtScreens() {
        connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) { watch(*screen), copy(); });
        connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this] { copy(); });
        connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] { copy(); });
        for (QScreen* screen : QGuiApplication::screens())
            watch(*screen);
        copy();
    }
    QList<Screen> screens() const override {
        const std::lock_guard lock(m_mutex);
        return m_screens;
    }

private:
    void watch(QScreen& screen) {
        connect(&screen, &QScreen::geometryChanged, this, [this] { copy(); });
        connect(&screen, &QScreen::availableGeometryChanged, this, [this] { copy(); });
    }
    void copy() {
        QList<Screen> found;
        const QScreen* primary = QGuiApplication::primaryScreen();
        for (QScreen* screen : QGuiApplication::screens()) {
            if (!m_names.contains(screen->name()))
                m_names.append(screen->name());
            const Screen row{std::uint32_t(m_names.indexOf(screen->name()) + 1), screen->name(),
                             toPoints(screen->geometry(), primary->geometry()),
                             toPoints(screen->availableGeometry(), primary->geometry()), screen->devicePixelRatio()};
            found.insert(screen == primary ? 0 : found.size(), row);
        }
        const std::lock_guard lock(m_mutex);
        m_screens = found;
    }

    QStringList m_names;
    mutable std::mutex m_mutex;
    QList<Screen> m_screens;
};

class NoWindows final : public WindowList {
public:
    QList<WindowInfo> windows() const override { return {}; }
    std::optional<QRectF> liveFrame(std::uint32_t) const override { return std::nullopt; }
};

class QtPointer final : public Pointer {
public:
    QPointF location() override {
        const QScreen* primary = QGuiApplication::primaryScreen();
        return primary ? toPoints(QRect(QCursor::pos(), QSize(0, 0)), primary->geometry()).topLeft() : QPointF();
    }
    unsigned takePressedButtons() override { return 0; }
};

} // namespace

Platform makeWaylandPlatform(std::shared_ptr<HostClock> clock) {
    Platform platform;
    platform.clock = std::move(clock);
    platform.screens = std::make_shared<QtScreens>();
    platform.windows = std::make_shared<NoWindows>();
    platform.pointer = std::make_shared<QtPointer>();
    return platform;
}

} // namespace keldra
