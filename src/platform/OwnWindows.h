#pragma once

#include <QHash>
#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>

namespace keldra {

/// Whether recordings may see a window of ours.
enum class SharingType { none = 0, readOnly = 1 };

/// A window of this program.
struct OwnWindow {
    QString identifier;
    SharingType sharingType = SharingType::readOnly;
    bool isVisible = false;
    double alpha = 1;
    /// Desktop points.
    QRectF frame;
    friend bool operator==(const OwnWindow&, const OwnWindow&) = default;
};

/// The windows of this program, kept up to date by those who show them. Main thread.
class OwnWindows {
public:
    using Handle = std::uint64_t;

    Handle add(const OwnWindow& window) {
        m_windows.insert(++m_lastHandle, window);
        return m_lastHandle;
    }
    void update(Handle handle, const OwnWindow& window) { m_windows.insert(handle, window); }
    void remove(Handle handle) { m_windows.remove(handle); }
    /// In no particular order.
    QList<OwnWindow> windows() const { return m_windows.values(); }

private:
    QHash<Handle, OwnWindow> m_windows;
    Handle m_lastHandle = 0;
};

} // namespace keldra
