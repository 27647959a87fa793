#include "launch/DesktopPlatform.h"

#include "identity/Identity.h"
#include "platform/pipewire/AudioSinkSounds.h"
#include "platform/pipewire/PipeWireAudioSink.h"
#include "platform/pipewire/PipeWireDevices.h"
#include "platform/portal/PortalDisplayCapture.h"
#include "platform/portal/PortalPermissions.h"
#include "platform/qt/DBusRunningApplications.h"
#include "platform/qt/DBusSleepInhibitor.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtEventMonitor.h"
#include "platform/qt/QtWorkspace.h"
#include "platform/qt/WaylandPlatform.h"
#include "platform/x11/X11Platform.h"

#include <QtGlobal>

namespace keldra {
namespace {

void addDesktop(Platform& platform, Scheduler& scheduler, Executor& mainQueue) {
    platform.workspace = std::make_shared<QtWorkspace>();
    platform.dialogs = std::make_shared<QtDialogs>(mainQueue);
    platform.events = std::make_shared<QtEventMonitor>();
    platform.sounds =
        std::make_shared<AudioSinkSounds>([] { return std::make_unique<PipeWireAudioSink>(); }, scheduler);
    platform.sleepInhibitor = std::make_shared<DBusSleepInhibitor>();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected())
        platform.applications = std::make_shared<DBusRunningApplications>(
            bus, BusIdentity{QString::fromLatin1(identity::busName), QString::fromLatin1(identity::earlierBusName)},
            scheduler);
}

} // namespace

bool isWaylandSession() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
}

Result<Platform> makeDesktopPlatform(std::shared_ptr<HostClock> clock, Executor& mainQueue) {
    if (isWaylandSession())
        return fail(Error{"Platform",
                          1,
                          "this is a Wayland session, which this version cannot record: log in to an X11 session, or "
                          "unset WAYLAND_DISPLAY and XDG_SESSION_TYPE to record an X server",
                          {}});
    TRY_LET(Platform platform, makeX11Platform(std::move(clock), mainQueue, 1.0));
    addPipeWireDevices(platform, mainQueue);
    return platform;
}

Result<Platform> makeAgentPlatform(std::shared_ptr<HostClock> clock, Scheduler& scheduler, Executor& mainQueue,
                                   double scaleFactor) {
    Platform platform;
    if (isWaylandSession()) {
        platform = makeWaylandPlatform(clock);
        platform.pickDisplay = [clock, &mainQueue, screens = platform.screens,
                                restoreToken = std::make_shared<QString>()](DisplayCaptureConfiguration configuration,
                                                                            Completion<PickedDisplay> done) {
            // Its user is asked once, but for each recording where there is something to choose from.
            if (screens->screens().size() > 1)
                restoreToken->clear();
            PortalDisplayCapture::pick(clock, mainQueue, restoreToken, configuration, std::move(done));
        };
        platform.permissions = std::make_shared<PortalPermissions>(QDBusConnection::sessionBus());
    } else {
        TRY_LET(platform, makeX11Platform(std::move(clock), mainQueue, scaleFactor));
    }
    addPipeWireDevices(platform, mainQueue);
    addDesktop(platform, scheduler, mainQueue);
    return platform;
}

} // namespace keldra
