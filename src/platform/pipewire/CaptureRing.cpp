#include "platform/pipewire/CaptureRing.h"

#include <algorithm>

namespace keldra {
namespace {

constexpr std::size_t sampleRoom = 2 * 2 * 48000;
constexpr std::size_t slotRoom = 4096;

} // namespace

CaptureRing::CaptureRing() : m_samples(sampleRoom), m_slots(slotRoom) {}

bool CaptureRing::write(const DeviceClock::Report& report, int channelCount, const float* samples) {
    const std::size_t count = std::size_t(report.frameCount) * std::size_t(channelCount);
    const bool hasRoom = m_samplesWritten + count - m_samplesFreed.load(std::memory_order_acquire) <= sampleRoom &&
                         m_slotsWritten - m_slotsFreed.load(std::memory_order_acquire) < slotRoom;
    if (!hasRoom)
        return false;
    const std::size_t begin = m_samplesWritten % sampleRoom;
    const std::size_t beforeWrap = std::min(count, sampleRoom - begin);
    std::copy_n(samples, beforeWrap, m_samples.data() + begin);
    std::copy_n(samples + beforeWrap, count - beforeWrap, m_samples.data());
    m_slots[m_slotsWritten % slotRoom] = {report, count};
    m_samplesWritten += count;
    ++m_slotsWritten;
    m_slotsPublished.store(m_slotsWritten, std::memory_order_release);
    return true;
}

std::optional<DeviceClock::Report> CaptureRing::read(std::vector<float>& samples) {
    if (m_slotsRead == m_slotsPublished.load(std::memory_order_acquire))
        return std::nullopt;
    const Slot slot = m_slots[m_slotsRead % slotRoom];
    const std::size_t begin = m_samplesRead % sampleRoom;
    const std::size_t beforeWrap = std::min(slot.sampleCount, sampleRoom - begin);
    samples.resize(slot.sampleCount);
    std::copy_n(m_samples.data() + begin, beforeWrap, samples.data());
    std::copy_n(m_samples.data(), slot.sampleCount - beforeWrap, samples.data() + beforeWrap);
    m_samplesRead += slot.sampleCount;
    ++m_slotsRead;
    m_samplesFreed.store(m_samplesRead, std::memory_order_release);
    m_slotsFreed.store(m_slotsRead, std::memory_order_release);
    return slot.report;
}

} // namespace keldra
