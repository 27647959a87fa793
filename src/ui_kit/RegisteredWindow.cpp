#include "ui_kit/RegisteredWindow.h"

#include "platform/EventMonitor.h"
#include "ui_kit/DesktopCoordinates.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace keldra {

RegisteredWindow::RegisteredWindow(QWindow& window, std::shared_ptr<OwnWindows> ownWindows, QString identifier,
                                   SharingType sharingType)
    : m_window(window)
    , m_ownWindows(std::move(ownWindows))
    , m_identifier(std::move(identifier))
    , m_sharingType(sharingType)
    , m_handle(m_ownWindows->add(row())) {
    window.setProperty(windowIdentifierProperty, m_identifier);
    connect(&window, &QWindow::visibleChanged, this, &RegisteredWindow::update);
    connect(&window, &QWindow::opacityChanged, this, &RegisteredWindow::update);
    connect(&window, &QWindow::xChanged, this, &RegisteredWindow::update);
    connect(&window, &QWindow::yChanged, this, &RegisteredWindow::update);
    connect(&window, &QWindow::widthChanged, this, &RegisteredWindow::update);
    connect(&window, &QWindow::heightChanged, this, &RegisteredWindow::update);
    connect(&window, &QWindow::screenChanged, this, &RegisteredWindow::update);
    // The origin of points goes with the primary screen.
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &RegisteredWindow::update);
}

RegisteredWindow::~RegisteredWindow() {
    m_ownWindows->remove(m_handle);
}

void RegisteredWindow::setSharingType(SharingType sharingType) {
    m_sharingType = sharingType;
    update();
}

OwnWindow RegisteredWindow::row() const {
    return {m_identifier, m_sharingType, m_window.isVisible(), m_window.opacity(),
            DesktopCoordinates::current().toPoints(m_window.geometry())};
}

void RegisteredWindow::update() {
    m_ownWindows->update(m_handle, row());
}

} // namespace keldra
