// Times the waveform of a file beside a plain loop that decodes the same file through libav and drops what comes out.
// usage: bench_waveform ROUNDS FILE

#include "audio/EditorWaveformGenerator.h"
#include "media/Asset.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

double secondsOf(const auto& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

[[noreturn]] void giveUp(const char* why) {
    std::fprintf(stderr, "bench_waveform: %s\n", why);
    std::exit(1);
}

/// The number of samples decoded.
std::int64_t decodeAlone(const char* path) {
    AVFormatContext* input = nullptr;
    if (avformat_open_input(&input, path, nullptr, nullptr) < 0 || avformat_find_stream_info(input, nullptr) < 0)
        giveUp("the file cannot be opened");
    const AVCodec* decoder = nullptr;
    const int index = av_find_best_stream(input, AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
    AVCodecContext* codec = avcodec_alloc_context3(decoder);
    if (index < 0 || avcodec_parameters_to_context(codec, input->streams[index]->codecpar) < 0 ||
        avcodec_open2(codec, decoder, nullptr) < 0)
        giveUp("there is no sound that can be decoded");
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    std::int64_t samples = 0;
    const auto receive = [&] {
        while (avcodec_receive_frame(codec, frame) >= 0)
            samples += frame->nb_samples;
    };
    while (av_read_frame(input, packet) >= 0) {
        if (packet->stream_index == index && avcodec_send_packet(codec, packet) >= 0)
            receive();
        av_packet_unref(packet);
    }
    avcodec_send_packet(codec, nullptr);
    receive();
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&codec);
    avformat_close_input(&input);
    return samples;
}

void makeWaveform(keldra::EditorWaveformGenerator& generator, keldra::Executor& answer, const char* path,
                  double duration) {
    std::promise<bool> made;
    generator.generate(path, std::nullopt, duration, answer, [&](keldra::Result<keldra::EditorWaveform> waveform) {
        made.set_value(waveform && !waveform->samples.empty());
    });
    if (!made.get_future().get())
        giveUp("no waveform");
}

} // namespace

int main(int count, char** words) {
    const int rounds = count == 3 ? std::atoi(words[1]) : 0;
    if (rounds < 1)
        giveUp("give a number of rounds and a file");
    const auto asset = keldra::Asset::open(words[2]);
    if (!asset)
        giveUp(asset.error().message.c_str());
    const double duration = (*asset)->duration().seconds();
    keldra::SerialQueue answer("bench.answer");
    keldra::EditorWaveformGenerator generator;
    std::vector<double> ours;
    std::vector<double> alone;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        alone.push_back(secondsOf([&] { decodeAlone(words[2]); }));
        ours.push_back(secondsOf([&] { makeWaveform(generator, answer, words[2], duration); }));
        ratios.push_back(ours.back() / alone.back());
    }
    for (auto* list : {&ours, &alone, &ratios})
        std::sort(list->begin(), list->end());
    const auto middle = std::size_t(rounds / 2);
    std::printf("waveform %.3f s  decoding alone %.3f s  ratio %.2f  (%.0f s of sound)\n", ours[middle], alone[middle],
                ratios[middle], duration);
    return 0;
}
