#include "media/SoundEncoding.h"

#include "media/MediaError.h"

namespace keldra {
namespace {

constexpr std::int64_t bitRate = 192'000;
/// About four seconds.
constexpr std::size_t packetsAhead = 200;

Error stopped() {
    return mediaError(MediaError::cancelled, "Export cancelled.");
}

} // namespace

SoundEncoding::SoundEncoding(MixReader reader) : m_reader(std::move(reader)), m_packets(packetsAhead) {}

SoundEncoding::~SoundEncoding() {
    stop();
}

Result<AVStream*> SoundEncoding::addTrackTo(MovieMuxer& muxer) {
    const AudioFormat& format = m_reader.format();
    TRY_LET(m_encoder, AacEncoder::open(format.sampleRate, format.channelCount, bitRate));
    return m_encoder->addTrackTo(muxer);
}

void SoundEncoding::start(FailureSink failed) {
    m_queue.post([this, failed = std::move(failed)] {
        Result<void> encoded = encodeAll();
        if (encoded)
            m_packets.finish();
        else if (encoded.error() != stopped())
            failed(std::move(encoded.error()));
    });
}

Result<void> SoundEncoding::encodeAll() {
    const auto sink = [this](PacketPtr packet) -> Result<void> {
        if (!m_packets.push(std::move(packet)))
            return fail(stopped());
        return {};
    };
    for (;;) {
        TRY_LET(const AudioBuffer sound, m_reader.next(m_encoder->frameSize()));
        if (!sound)
            return m_encoder->drain(sink);
        TRY(m_encoder->encode(sound, sink));
    }
}

PacketPtr SoundEncoding::take() {
    std::optional<PacketPtr> packet = m_packets.pop();
    return packet ? std::move(*packet) : nullptr;
}

} // namespace keldra
