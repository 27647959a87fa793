#pragma once

#include "base/Result.h"
#include "base/SerialQueue.h"
#include "media/AacEncoder.h"
#include "media/BoundedQueue.h"
#include "media/MixReader.h"

#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// A composition's sound on its way into a file: mixed and encoded on a queue of its own, a few seconds ahead of
/// whoever takes the packets. 192 kb/s AAC, stereo, 48 kHz.
///
/// Threads: made and stopped on any; started and taken from on one.
class SoundEncoding {
public:
    /// What to tell when reading or encoding fails; on the queue.
    using FailureSink = std::function<void(Error)>;

    explicit SoundEncoding(MixReader reader);
    /// Stops, and waits for its queue.
    ~SoundEncoding();

    /// Opens the encoder and describes the track; before the muxer begins.
    [[nodiscard]] Result<AVStream*> addTrackTo(MovieMuxer& muxer);
    AVRational timeBase() const { return m_encoder->timeBase(); }
    void start(FailureSink failed);

    /// The next packet, in the order of time; waits for it. Null at the end, or when stopped.
    PacketPtr take();
    void stop() { m_packets.stop(); }

private:
    [[nodiscard]] Result<void> encodeAll();

    MixReader m_reader;
    std::unique_ptr<AacEncoder> m_encoder;
    BoundedQueue<PacketPtr> m_packets;
    SerialQueue m_queue{"KELDRA.Export.Sound"};
};

} // namespace keldra
