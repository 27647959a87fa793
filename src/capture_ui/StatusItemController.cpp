#include "capture_ui/StatusItemController.h"

#include "capture_ui/TrayMark.h"
#include "ui_kit/WindowPlacement.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

namespace keldra {

StatusItemController::StatusItemController(Closures closures)
    : m_closures(std::move(closures))
    , m_menu(std::make_unique<QMenu>())
    , m_item(std::make_unique<QSystemTrayIcon>(trayMark())) {
    fillMenu();
    m_item->setToolTip(QStringLiteral("KELDRA"));
    m_item->setContextMenu(m_menu.get());
    // Every click opens the menu, whatever button the desktop keeps for menus.
    connect(m_item.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_menu->popup(QCursor::pos());
    });
    // Without a tray Qt has nothing for Wayland but what it has for X11; it complains, and does not look again.
    if (canPlaceWindows() || QSystemTrayIcon::isSystemTrayAvailable())
        m_item->show();
}

StatusItemController::~StatusItemController() = default;

void StatusItemController::fillMenu() {
    m_visibilityItem = m_menu->addAction(QString());
    connect(m_visibilityItem, &QAction::triggered, this, [this] { m_closures.onToggleVisibility(); });
    connect(m_menu->addAction(tr("Settings")), &QAction::triggered, this, [this] { m_closures.onSettings(); });
    m_menu->addSeparator();
    connect(m_menu->addAction(tr("Quit App")), &QAction::triggered, this, [this] { m_closures.onQuit(); });
    connect(m_menu.get(), &QMenu::aboutToShow, this, &StatusItemController::refreshTitle);
    // Desktops that draw the menu themselves read it before they open it.
    refreshTitle();
}

void StatusItemController::refreshTitle() {
    m_visibilityItem->setText(m_closures.isAppVisible() ? tr("Hide App") : tr("Show App"));
}

} // namespace keldra
