#include "launch/DesktopPlatform.h"

#include "platform/pipewire/PipeWireDevices.h"
#include "platform/x11/X11Platform.h"

#include <QtGlobal>

namespace keldra {
namespace {

bool isWaylandSession() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
}

} // namespace

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

} // namespace keldra
