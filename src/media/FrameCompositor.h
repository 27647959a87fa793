#pragma once

#include <memory>

namespace keldra {

class FrameRequest;

/// Draws the frames of a video composition. Requests are answered in their order, on a thread of the compositor's own.
class FrameCompositor {
public:
    virtual ~FrameCompositor() = default;
    /// Any thread; returns at once.
    virtual void startRequest(std::shared_ptr<FrameRequest> request) = 0;
};

} // namespace keldra
