#include "media/TrackReader.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

// Exact seeks at random times of a movie, ours and libav's own floor in turn: two threads, frames that nobody refers to
// skipped before the target.
//
// usage: bench_seek MOVIE [COUNT]

namespace {

using Clock = std::chrono::steady_clock;

/// What libav alone needs: the key frame before, then decoding up to the target.
class Floor {
public:
    explicit Floor(const char* path) {
        avformat_open_input(&m_format, path, nullptr, nullptr);
        avformat_find_stream_info(m_format, nullptr);
        m_index = av_find_best_stream(m_format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        const AVStream& stream = *m_format->streams[m_index];
        const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
        m_codec = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(m_codec, stream.codecpar);
        m_codec->thread_count = 2;
        avcodec_open2(m_codec, codec, nullptr);
    }
    ~Floor() {
        av_packet_free(&m_packet);
        av_frame_free(&m_frame);
        avcodec_free_context(&m_codec);
        avformat_close_input(&m_format);
    }
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    void seek(double seconds) {
        const AVStream& stream = *m_format->streams[m_index];
        const auto target = std::int64_t(seconds / av_q2d(stream.time_base));
        av_seek_frame(m_format, m_index, target, AVSEEK_FLAG_BACKWARD);
        avcodec_flush_buffers(m_codec);
        while (av_read_frame(m_format, m_packet) >= 0) {
            if (m_packet->stream_index == m_index) {
                const bool isBefore = m_packet->pts + 2 * m_packet->duration <= target;
                m_codec->skip_frame = isBefore ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
                avcodec_send_packet(m_codec, m_packet);
                while (avcodec_receive_frame(m_codec, m_frame) >= 0)
                    if (m_frame->pts + m_frame->pkt_duration > target)
                        return av_packet_unref(m_packet);
            }
            av_packet_unref(m_packet);
        }
    }

private:
    AVFormatContext* m_format = nullptr;
    AVCodecContext* m_codec = nullptr;
    AVPacket* m_packet = av_packet_alloc();
    AVFrame* m_frame = av_frame_alloc();
    int m_index = 0;
};

double at(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[std::size_t(double(values.size() - 1) * share)];
}

} // namespace

int main(int count, char** words) {
    using namespace keldra;
    if (count < 2)
        return 2;
    const auto asset = Asset::open(words[1]);
    if (!asset || (*asset)->tracks(MediaKind::video).empty()) {
        std::fprintf(stderr, "%s is no movie\n", words[1]);
        return 1;
    }
    const AssetTrack track = (*asset)->tracks(MediaKind::video).front();
    const auto reader = TrackReader::open(*asset, track.index, {PixelFormat::i420, 2});
    Floor floor(words[1]);
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(0, track.timeRange.duration.seconds() - 0.1);
    std::vector<double> ours;
    std::vector<double> theirs;
    const int rounds = count > 2 ? std::atoi(words[2]) : 100;
    for (int round = 0; round < rounds; ++round) {
        const double seconds = anywhere(random);
        const auto begin = Clock::now();
        if (!(*reader)->seek(MediaTime::fromSeconds(seconds, 60000)) || !(*reader)->next())
            return 1;
        const auto middle = Clock::now();
        floor.seek(seconds);
        const auto end = Clock::now();
        ours.push_back(std::chrono::duration<double, std::milli>(middle - begin).count());
        theirs.push_back(std::chrono::duration<double, std::milli>(end - middle).count());
    }
    std::printf("ours  median %6.1f ms  95th %6.1f ms\nlibav median %6.1f ms  95th %6.1f ms\nratio median %6.2f     "
                "95th %6.2f\n",
                at(ours, 0.5), at(ours, 0.95), at(theirs, 0.5), at(theirs, 0.95), at(ours, 0.5) / at(theirs, 0.5),
                at(ours, 0.95) / at(theirs, 0.95));
}
