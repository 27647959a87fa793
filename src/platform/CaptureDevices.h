#pragma once

#include "base/Executor.h"
#include "base/Result.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <optional>

namespace keldra {

enum class CaptureDeviceKind { camera, microphone };

/// What the desktop says about our use of a kind of device.
enum class CaptureAuthorization { undetermined, denied, authorized };

/// A camera or microphone that can be chosen.
struct CaptureDeviceOption {
    /// Stays the same while the device is connected, and usually longer.
    QString id;
    QString name;
    friend bool operator==(const CaptureDeviceOption&, const CaptureDeviceOption&) = default;
};

/// Cameras and microphones. Main thread.
class CaptureDevices {
public:
    virtual ~CaptureDevices() = default;
    virtual CaptureAuthorization authorization(CaptureDeviceKind kind) const = 0;
    /// Asks the user where the answer is open; answers on main.
    virtual void requestAccess(CaptureDeviceKind kind, Completion<bool> done) = 0;
    virtual QList<CaptureDeviceOption> devices(CaptureDeviceKind kind) const = 0;
    /// The id of the desktop's own choice; empty when it has none.
    virtual QString defaultDeviceID(CaptureDeviceKind kind) const = 0;

    /// Runs on main whenever a device has come or gone; takes the place of the handler before it. None is allowed.
    void setOnChanged(Work onChanged) { m_onChanged = std::move(onChanged); }

protected:
    void notifyChanged() const {
        if (const Work onChanged = m_onChanged)
            onChanged();
    }

private:
    Work m_onChanged;
};

/// The device with the wanted id, else the desktop's choice, else the first one.
inline std::optional<CaptureDeviceOption> chooseDevice(const QList<CaptureDeviceOption>& devices, const QString& wanted,
                                                       const QString& desktopsChoice) {
    for (const QString& id : {wanted, desktopsChoice}) {
        const auto found =
            std::find_if(devices.begin(), devices.end(), [&](const auto& each) { return each.id == id; });
        if (!id.isEmpty() && found != devices.end())
            return *found;
    }
    if (devices.isEmpty())
        return std::nullopt;
    return devices.first();
}

} // namespace keldra
