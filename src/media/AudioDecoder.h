#pragma once

#include "base/Result.h"
#include "media/MovieInput.h"
#include "media/SoundConversion.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace keldra {

/// A stretch of decoded sound: `frameCount` frames of `frame`, from its frame `offset` on.
struct DecodedSound {
    FramePtr frame;
    int offset = 0;
    int frameCount = 0;
    /// Where the first of them stands on the file's line, in samples at the decoder's rate.
    std::int64_t position = 0;
};

/// Decodes one audio stream of a file into stretches of one rate, channel count and sample format, in order and none
/// overlapping. Belongs to one thread at a time.
///
/// Time: samples of the stream's rate, counted from the file's zero. Packets that follow each other do so without a
/// seam even when the container rounds its times (Matroska to a millisecond); times that leave more than 15 ms between
/// them are a hole, and so is a packet that was damaged and left out. A codec's run-in is not part of the sound.
class AudioDecoder {
public:
    [[nodiscard]] static Result<std::unique_ptr<AudioDecoder>> open(const std::string& path, int streamIndex);

    int sampleRate() const { return m_rate; }
    int channelCount() const { return m_channelCount; }

    /// Nothing at the end.
    [[nodiscard]] Result<std::optional<DecodedSound>> next();
    /// After this next() gives what lies from `position` on, as if it had been reached by reading.
    [[nodiscard]] Result<void> seek(std::int64_t position);

private:
    AudioDecoder() = default;
    [[nodiscard]] Result<void> openInput();
    [[nodiscard]] Result<void> openCodec();
    [[nodiscard]] Result<void> rewind();
    [[nodiscard]] Result<std::optional<DecodedSound>> decodeNext();
    [[nodiscard]] Result<FramePtr> receive();
    /// One packet further into the codec, or the news of the end.
    [[nodiscard]] Result<void> feed();
    /// A stream that changes its form half way is converted to the first. Null for a form that cannot be meant.
    FramePtr inFirstForm(FramePtr frame);
    /// Where a frame stands, judged by its stamp and by what came before it.
    std::int64_t positionOf(const AVFrame& frame);
    std::int64_t settled(std::int64_t stamped) const;
    void cutTo(DecodedSound& sound) const;
    [[nodiscard]] Result<void> learnStart();
    void forgetPosition();
    std::int64_t runIn() const;

    std::string m_path;
    std::unique_ptr<MovieInput> m_input;
    int m_streamIndex = 0;
    int m_rate = 0;
    int m_channelCount = 0;
    AVSampleFormat m_format = AV_SAMPLE_FMT_NONE;
    std::int64_t m_origin = 0;
    /// How coarse the container's times are, in samples; 0 when they hold every sample exactly.
    double m_tick = 0;
    CodecContextPtr m_codec;
    PacketPtr m_packet;
    SwrPtr m_toFirstForm;
    SoundEnd m_otherForm;

    /// Of the first sound of the stream.
    std::optional<std::int64_t> m_start;
    /// Where one packet ends, and what the lengths of all are multiples of.
    std::int64_t m_packetEnd = 0;
    std::int64_t m_packetGrid = 0;
    /// Where the sound ends although the last packet holds more.
    std::optional<std::int64_t> m_end;
    /// Nothing before this is given.
    std::int64_t m_from = 0;
    /// Where the next packet begins if it follows on.
    std::optional<std::int64_t> m_expected;
    bool m_isAfterLoss = false;
    /// Since a seek nothing was given.
    bool m_isRunningIn = false;
    /// Decoded while looking for a place, and not given yet.
    std::optional<DecodedSound> m_waiting;
    bool m_isInputAtEnd = false;
};

} // namespace keldra
