#pragma once

#include "base/Result.h"
#include "imaging/Geometry.h"
#include "platform/x11/X11Connection.h"

#include <chrono>
#include <optional>
#include <xcb/render.h>

namespace keldra {

/// What a stream shows, as the server has it. One thread, that of its connection's events.
class SourcePicture {
public:
    virtual ~SourcePicture() = default;
    /// Takes in one event; answers whether the picture may look different now.
    virtual bool handle(const xcb_generic_event_t& event) = 0;
    /// Looks for what no event tells of; now and then. Answers as handle().
    virtual bool recheck() { return false; }
    /// Catches up with what events told. Errors: the source is gone for good.
    virtual Result<void> update() = 0;
    /// What is shown now, root pixels; empty while there is nothing to see.
    virtual PixelRect area() const = 0;
    /// Asks the server to paint the area, opaque, pixel by pixel from the picture's top-left corner. Later changes are
    /// events.
    virtual void paint(xcb_render_picture_t picture) = 0;
    /// After painting, and after the events up to then: whether it shows what it must not.
    virtual bool isSpoiled() { return false; }
    /// No picture is right before that moment.
    virtual std::optional<std::chrono::steady_clock::time_point> readyAt() const { return std::nullopt; }
};

} // namespace keldra
