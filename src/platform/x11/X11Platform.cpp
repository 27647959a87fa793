#include "platform/x11/X11Platform.h"

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11DisplayCapture.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/X11Pointer.h"
#include "platform/x11/X11ScreenStream.h"
#include "platform/x11/X11Screens.h"
#include "platform/x11/X11ShareableContent.h"
#include "platform/x11/X11WindowList.h"

namespace keldra {

Result<Platform> makeX11Platform(std::shared_ptr<HostClock> clock, Executor& mainQueue, double scaleFactor) {
    TRY_LET(const std::shared_ptr<X11Connection> connection, X11Connection::open());
    const auto numbers = std::make_shared<MonitorNumbers>();
    Platform platform;
    platform.clock = clock;
    platform.screens = std::make_shared<X11Screens>(connection, numbers, scaleFactor);
    platform.windows = std::make_shared<X11WindowList>(connection, scaleFactor);
    platform.shareableContent = std::make_shared<X11ShareableContent>(platform.screens, platform.windows, mainQueue);
    TRY_LET(std::shared_ptr<X11Connection> pointerConnection, X11Connection::open());
    platform.pointer = std::make_shared<X11Pointer>(std::move(pointerConnection), scaleFactor);
    platform.makeDisplayCapture = [clock, numbers, &mainQueue]() -> std::unique_ptr<DisplayCapture> {
        return std::make_unique<X11DisplayCapture>(clock, numbers, mainQueue);
    };
    if (connection->requireStreaming())
        platform.makeScreenStream = [clock, numbers, &mainQueue]() -> std::unique_ptr<ScreenStream> {
            return std::make_unique<X11ScreenStream>(clock, numbers, mainQueue);
        };
    return platform;
}

} // namespace keldra
