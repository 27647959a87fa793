#pragma once

#include "platform/pipewire/DeviceClock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

struct pw_buffer;
struct pw_stream;
struct spa_pod;
struct spa_pod_builder;

namespace keldra {

/// What a stream of sound takes: 32-bit floats at 48 kHz; of the device's own channels, or of `channelCount`.
const spa_pod* soundFormat(spa_pod_builder& builder, int channelCount);

/// How many channels a format of sound has; 0 when it is none that we take.
int channelsOf(const spa_pod& format);

/// The blocks that wait in a stream, oldest first, each with when its first frame sounded. On the thread that
/// processes.
class CapturedBlocks {
public:
    /// `channelCount` is the format's.
    CapturedBlocks(pw_stream& stream, int channelCount);
    /// Gives them back.
    ~CapturedBlocks();
    CapturedBlocks(const CapturedBlocks&) = delete;
    CapturedBlocks& operator=(const CapturedBlocks&) = delete;

    template <typename Take>
    void forEach(Take take) const {
        for (std::size_t i = 0; i < m_count; ++i)
            take(m_blocks[i].report, m_blocks[i].samples);
    }

private:
    struct Block {
        pw_buffer* buffer = nullptr;
        const float* samples = nullptr;
        DeviceClock::Report report;
    };
    static constexpr std::size_t most = 16;

    pw_stream& m_stream;
    std::array<Block, most> m_blocks{};
    std::size_t m_count = 0;
};

} // namespace keldra
