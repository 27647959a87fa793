#pragma once

#include "base/Result.h"

#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>

namespace keldra {

/// What may be recorded at one moment. Frames in desktop points.
struct ShareableContentSnapshot {
    struct Display {
        std::uint32_t displayID = 0;
        QRectF frame;
    };
    struct Window {
        std::uint32_t windowID = 0;
        QRectF frame;
    };
    QList<Display> displays;
    QList<Window> windows;
};

/// Asks the desktop what may be recorded. Main thread; answers on main.
class ShareableContent {
public:
    virtual ~ShareableContent() = default;
    /// Errors: why the desktop cannot be asked.
    virtual void current(Completion<ShareableContentSnapshot> done) = 0;
};

} // namespace keldra
