#include "recording/CapturePath.h"

#include <QtGlobal>

namespace keldra {

CapturePath capturePathOf(const Platform& platform) {
    const QByteArray forced = qgetenv("KELDRA_CAPTURE");
    if (forced == "stream")
        return CapturePath::stream;
    if (forced == "display" || !platform.makeScreenStream)
        return CapturePath::display;
    return CapturePath::stream;
}

} // namespace keldra
