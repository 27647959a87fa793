#include "platform/pipewire/HeardBlock.h"

#include "base/HostClock.h"

#include <algorithm>

namespace keldra {

std::optional<AudioSink::Position> positionAt(std::int64_t now, const HeardBlock& last, std::int64_t origin) {
    // A block from before the origin says nothing about what came after it.
    if (last.firstFrame < origin)
        return std::nullopt;
    constexpr double framesPerNanosecond = AudioSink::sampleRate / 1e9;
    const std::int64_t end = last.heardAt + std::int64_t(double(last.frameCount) / framesPerNanosecond);
    const std::int64_t at = std::min(now, end);
    const double frame = double(last.firstFrame - origin) + double(at - last.heardAt) * framesPerNanosecond;
    if (frame < 0)
        return std::nullopt;
    return AudioSink::Position{frame, MediaTime(at / 1000, HostClock::timescale)};
}

void LastHeardBlock::publish(const HeardBlock& block) {
    const std::uint64_t number = m_number.load() + 1;
    Slot& slot = m_slots[number % 2];
    slot.firstFrame.store(block.firstFrame);
    slot.frameCount.store(block.frameCount);
    slot.heardAt.store(block.heardAt);
    m_number.store(number);
}

std::optional<HeardBlock> LastHeardBlock::latest() const {
    while (true) {
        const std::uint64_t number = m_number.load();
        if (number == 0)
            return std::nullopt;
        const Slot& slot = m_slots[number % 2];
        const HeardBlock block{slot.firstFrame.load(), slot.frameCount.load(), slot.heardAt.load()};
        // Whoever writes this slot again has published the other one before.
        if (m_number.load() == number)
            return block;
    }
}

} // namespace keldra
