#pragma once

#include "imaging/PixelBuffer.h"
#include "media/FrameRequest.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <variant>
#include <vector>

namespace keldra {

/// The few frames of an export between its reader and its encoder: it bounds how many are under way, and puts them back
/// into order. Any thread.
class FrameWindow {
public:
    /// The frame looks like the one before it.
    struct Repeat {};
    using Frame = std::variant<PixelBuffer, Repeat>;

    explicit FrameWindow(int capacity) : m_capacity(capacity), m_arrived(std::size_t(capacity)) {}

    /// The reader, before each frame: waits for a free place. False when stopped.
    [[nodiscard]] bool enter();
    void deliver(std::int64_t index, Frame frame);
    /// A frame that could not be composed stops everything.
    void deliver(std::int64_t index, FrameRequest::Outcome outcome);

    /// The encoder: waits for the frame with this number. Nothing when stopped.
    [[nodiscard]] std::optional<Frame> take(std::int64_t index);
    /// The encoder, when it is done with a frame.
    void leave();

    /// Ends all waiting; the first reason stays.
    void stop(Error reason);
    std::optional<Error> stopReason() const;

private:
    /// Of the frames under way no two have the same place.
    std::optional<Frame>& placeOf(std::int64_t index) { return m_arrived[std::size_t(index % m_capacity)]; }

    const int m_capacity;
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    int m_underWay = 0;
    std::vector<std::optional<Frame>> m_arrived;
    std::optional<Error> m_stopReason;
};

} // namespace keldra
