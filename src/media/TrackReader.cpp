#include "media/TrackReader.h"

#include "media/PictureConverter.h"
#include "media/VideoDecoder.h"

#include <algorithm>

namespace keldra {
namespace {

/// Keeps the frame on screen and, once it was looked for, the one after it; a frame becomes a picture only when asked
/// for, so frames passed over cost no conversion.
class VideoTrackReader final : public TrackReader {
public:
    VideoTrackReader(std::unique_ptr<VideoDecoder> decoder, PixelFormat format)
        : m_decoder(std::move(decoder)), m_converter(format) {}

    Result<void> seek(MediaTime time) override {
        const std::int64_t ticks = ticksAt(time);
        if (!isAheadOfCurrent(ticks)) {
            m_decoder->passOverBefore(ticks);
            TRY_LET(FramePtr first, m_decoder->seek(ticks));
            m_following.reset();
            setCurrent(std::move(first));
        }
        for (;;) {
            TRY(lookAhead());
            if (!m_following || m_following->pts > ticks)
                break;
            setCurrent(std::move(m_following));
        }
        m_isCurrentDue = true;
        return {};
    }

    Result<void> seekToKeyFrame(MediaTime time) override {
        m_decoder->passOverBefore(AV_NOPTS_VALUE);
        TRY_LET(FramePtr first, m_decoder->seek(ticksAt(time)));
        m_following.reset();
        setCurrent(std::move(first));
        m_isCurrentDue = true;
        return {};
    }

    Result<std::optional<VideoFrame>> next() override {
        if (!m_isCurrentDue) {
            TRY(lookAhead());
            setCurrent(std::move(m_following));
        }
        m_isCurrentDue = false;
        if (!m_hasCurrent)
            return std::optional<VideoFrame>();
        if (m_frame) {
            const AVRational aspect = m_decoder->sampleAspectRatio(*m_frame);
            Result<PixelBuffer> converted = m_converter.convert(std::move(m_frame), aspect);
            if (!converted) {
                setCurrent(nullptr);
                return fail(std::move(converted.error()));
            }
            m_picture = std::move(*converted);
        }
        TRY(lookAhead());
        const AVRational timeBase = m_decoder->timeBase();
        return VideoFrame{m_picture, timeOf(m_ticks, timeBase),
                          m_following ? timeOf(m_following->pts, timeBase) : MediaTime::indefinite()};
    }

private:
    std::int64_t ticksAt(MediaTime time) {
        // Far beyond any file, and far from overflow.
        constexpr std::int64_t farthest = std::int64_t(1) << 60;
        return std::clamp(ticksAtOrBefore(time, m_decoder->timeBase()), -farthest, farthest);
    }

    /// Whether the picture for `ticks` is the one on hand, or comes soonest by decoding on.
    bool isAheadOfCurrent(std::int64_t ticks) {
        if (!m_hasCurrent || ticks < m_ticks)
            return false;
        if (m_hasLookedAhead && (!m_following || ticks < m_following->pts))
            return true;
        return m_decoder->isReachedByDecodingOn(ticks);
    }

    Result<void> lookAhead() {
        if (m_following || (m_hasLookedAhead && !m_following))
            return {};
        TRY_LET(m_following, m_decoder->next());
        m_hasLookedAhead = true;
        return {};
    }

    void setCurrent(FramePtr frame) {
        m_frame = std::move(frame);
        m_picture = PixelBuffer();
        // At the end there is nothing to look for either.
        m_hasCurrent = m_frame != nullptr;
        m_hasLookedAhead = !m_hasCurrent;
        m_ticks = m_hasCurrent ? m_frame->pts : 0;
    }

    std::unique_ptr<VideoDecoder> m_decoder;
    PictureConverter m_converter;
    bool m_hasCurrent = false;
    std::int64_t m_ticks = 0;
    // The current picture is in one of the two.
    FramePtr m_frame;
    PixelBuffer m_picture;
    bool m_isCurrentDue = false;
    FramePtr m_following;
    bool m_hasLookedAhead = false;
};

} // namespace

Result<std::unique_ptr<TrackReader>> TrackReader::open(AssetPtr asset, int trackIndex, Options options) {
    TRY_LET(auto decoder, VideoDecoder::open(asset->path(), trackIndex, options.threadCount));
    return std::unique_ptr<TrackReader>(new VideoTrackReader(std::move(decoder), options.format));
}

} // namespace keldra
