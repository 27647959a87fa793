#include "platform/pipewire/SoundRing.h"

#include <algorithm>

namespace keldra {

SoundRing::SoundRing(std::size_t depth) : m_depth(depth), m_capacity(4 * depth), m_samples(m_capacity * channelCount) {}

std::size_t SoundRing::write(const float* frames, std::size_t count) {
    const std::int64_t written = m_written.load(std::memory_order_relaxed);
    const std::int64_t read = m_read.load(std::memory_order_acquire);
    const auto occupied = std::size_t(written - read);
    const auto kept = std::size_t(written - std::max(read, firstKept()));
    const std::size_t taken = std::min({count, m_depth - kept, m_capacity - occupied});
    const std::size_t beforeWrap = std::min(taken, m_capacity - slot(written));
    std::copy_n(frames, beforeWrap * channelCount, m_samples.data() + slot(written) * channelCount);
    std::copy_n(frames + beforeWrap * channelCount, (taken - beforeWrap) * channelCount, m_samples.data());
    m_written.store(written + std::int64_t(taken), std::memory_order_release);
    return taken;
}

std::int64_t SoundRing::forget() {
    const std::int64_t written = m_written.load(std::memory_order_relaxed);
    m_firstKept.store(written, std::memory_order_release);
    return written;
}

SoundRing::Taken SoundRing::read(float* frames, std::size_t count) {
    const std::int64_t kept = m_firstKept.load(std::memory_order_acquire);
    const std::int64_t first = std::max(m_read.load(std::memory_order_relaxed), kept);
    const auto available = std::size_t(m_written.load(std::memory_order_acquire) - first);
    const std::size_t taken = std::min(count, available);
    const std::size_t beforeWrap = std::min(taken, m_capacity - slot(first));
    std::copy_n(m_samples.data() + slot(first) * channelCount, beforeWrap * channelCount, frames);
    std::copy_n(m_samples.data(), (taken - beforeWrap) * channelCount, frames + beforeWrap * channelCount);
    m_read.store(first + std::int64_t(taken), std::memory_order_release);
    return {first, taken};
}

} // namespace keldra
