#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace keldra {

/// The program's mark in the desktop's tray, with a menu; it knows of nothing else. A desktop without a tray shows
/// nothing, and when a tray comes later the mark is in it, except on Wayland. Main thread, with a QApplication.
class StatusItemController : public QObject {
    Q_OBJECT

public:
    struct Closures {
        std::function<bool()> isAppVisible;
        std::function<void()> onToggleVisibility;
        std::function<void()> onSettings;
        std::function<void()> onQuit;
    };

    explicit StatusItemController(Closures closures);
    ~StatusItemController() override;

    QMenu& menu() { return *m_menu; }

private:
    void fillMenu();
    void refreshTitle();

    Closures m_closures;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_item;
    QAction* m_visibilityItem = nullptr;
};

} // namespace keldra
