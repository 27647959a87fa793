#pragma once

#include "media/AudioSink.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>

namespace keldra {

/// Frames that were handed to a device in one piece, and the host time (nanoseconds) at which the first is heard.
struct HeardBlock {
    std::int64_t firstFrame = 0;
    std::int64_t frameCount = 0;
    std::int64_t heardAt = 0;

    std::int64_t end() const { return firstFrame + frameCount; }
};

/// What is heard at `now` (nanoseconds), counted from frame `origin`, when `last` was handed on last. Nothing before
/// the first frame is heard; when all of the block has been, when its end was.
std::optional<AudioSink::Position> positionAt(std::int64_t now, const HeardBlock& last, std::int64_t origin);

/// The block that was handed on last, from one thread to another; neither waits.
class LastHeardBlock {
public:
    /// One thread.
    void publish(const HeardBlock& block);
    /// Another one. Nothing before the first.
    std::optional<HeardBlock> latest() const;

private:
    struct Slot {
        std::atomic<std::int64_t> firstFrame, frameCount, heardAt;
    };
    /// The one with the number of the last block is read while the other is written.
    std::array<Slot, 2> m_slots{};
    std::atomic<std::uint64_t> m_number = 0;
};

} // namespace keldra
