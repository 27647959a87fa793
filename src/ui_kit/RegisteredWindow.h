#pragma once

#include "platform/OwnWindows.h"

#include <QObject>
#include <QString>

#include <memory>

class QWindow;

namespace keldra {

/// Keeps one window's row in OwnWindows right, with its frame in desktop points, for as long as this object lives. The
/// window must outlive it. Main thread.
class RegisteredWindow : public QObject {
    Q_OBJECT

public:
    RegisteredWindow(QWindow& window, std::shared_ptr<OwnWindows> ownWindows, QString identifier,
                     SharingType sharingType);
    ~RegisteredWindow() override;

    SharingType sharingType() const { return m_sharingType; }
    void setSharingType(SharingType sharingType);

private:
    OwnWindow row() const;
    void update();

    QWindow& m_window;
    const std::shared_ptr<OwnWindows> m_ownWindows;
    const QString m_identifier;
    SharingType m_sharingType;
    const OwnWindows::Handle m_handle;
};

} // namespace keldra
