#include "platform/pipewire/SoundCapture.h"

#include <algorithm>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

namespace keldra {
namespace {

constexpr std::int64_t sampleRate = 48000;

} // namespace

const spa_pod* soundFormat(spa_pod_builder& builder, int channelCount) {
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = sampleRate;
    format.channels = std::uint32_t(channelCount);
    format.position[0] = channelCount == 1 ? SPA_AUDIO_CHANNEL_MONO : SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    return spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
}

int channelsOf(const spa_pod& format) {
    spa_audio_info_raw sound{};
    const bool isKnown = spa_format_audio_raw_parse(&format, &sound) >= 0 && sound.format == SPA_AUDIO_FORMAT_F32 &&
                         sound.rate == sampleRate;
    return isKnown ? int(sound.channels) : 0;
}

CapturedBlocks::CapturedBlocks(pw_stream& stream, int channelCount) : m_stream(stream) {
    pw_time time{};
    const bool isTimed = pw_stream_get_time_n(&stream, &time, sizeof time) >= 0 && time.now > 0 && time.rate.denom > 0;
    std::int64_t total = 0;
    while (m_count < most) {
        pw_buffer* buffer = pw_stream_dequeue_buffer(&stream);
        if (buffer == nullptr)
            break;
        const spa_data& data = buffer->buffer->datas[0];
        // What the other side says of its memory is believed as far as that memory goes.
        const std::uint32_t offset = std::min(data.chunk->offset, data.maxsize);
        const std::uint32_t size = std::min(data.chunk->size, data.maxsize - offset);
        // A block whose time nobody knows, the first after a start, is of no use.
        if (!isTimed || data.data == nullptr || size == 0 || channelCount == 0) {
            pw_stream_queue_buffer(&stream, buffer);
            continue;
        }
        Block& block = m_blocks[m_count++];
        block.buffer = buffer;
        block.samples = static_cast<const float*>(data.data) + offset / sizeof(float);
        block.report.frameCount = size / (sizeof(float) * std::uint32_t(channelCount));
        total += block.report.frameCount;
    }
    // The count and the time are those of the newest block's first frame: it sounded so long ago as the device and the
    // graph take to hand it on.
    const double tick = double(time.rate.num) / std::max(1U, time.rate.denom);
    const double age = double(time.delay) * tick + double(time.buffered) / sampleRate;
    const auto ticks = std::int64_t(double(time.ticks) * tick * sampleRate);
    std::int64_t behind = m_count > 0 ? total - m_blocks[m_count - 1].report.frameCount : 0;
    for (std::size_t i = 0; i < m_count; ++i) {
        DeviceClock::Report& report = m_blocks[i].report;
        report.ticks = ticks - behind;
        report.heardAt = double(time.now) * 1e-9 - age - double(behind) / sampleRate;
        behind -= report.frameCount;
    }
}

CapturedBlocks::~CapturedBlocks() {
    for (std::size_t i = 0; i < m_count; ++i)
        pw_stream_queue_buffer(&m_stream, m_blocks[i].buffer);
}

} // namespace keldra
