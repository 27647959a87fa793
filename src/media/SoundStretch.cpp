#include "media/SoundStretch.h"

#include "media/Libav.h"

#include <algorithm>
#include <cstring>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace keldra {
namespace {

constexpr const char* name = "The sound";

/// A filter changes the tempo by a factor from a half to two well.
std::string tempoFilters(double rate) {
    std::string filters;
    while (rate < 0.5 || rate > 2) {
        const double step = rate < 0.5 ? 0.5 : 2;
        filters += "atempo=" + std::to_string(step) + ",";
        rate /= step;
    }
    return filters + "atempo=" + std::to_string(rate);
}

} // namespace

struct SoundStretch::Graph {
    AVFilterGraph* graph = avfilter_graph_alloc();
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;
    int sampleRate = 0;

    ~Graph() { avfilter_graph_free(&graph); }

    int build(double rate) {
        const std::string format =
            "sample_rate=" + std::to_string(sampleRate) + ":sample_fmt=flt:channel_layout=stereo";
        int answer = avfilter_graph_create_filter(&source, avfilter_get_by_name("abuffer"), "in", format.c_str(),
                                                  nullptr, graph);
        if (answer >= 0)
            answer = avfilter_graph_create_filter(&sink, avfilter_get_by_name("abuffersink"), "out", nullptr, nullptr,
                                                  graph);
        if (answer < 0)
            return answer;
        AVFilterInOut* outputs = avfilter_inout_alloc();
        AVFilterInOut* inputs = avfilter_inout_alloc();
        *outputs = {av_strdup("in"), source, 0, nullptr};
        *inputs = {av_strdup("out"), sink, 0, nullptr};
        const std::string filters = tempoFilters(rate) + ",aformat=sample_fmts=flt:channel_layouts=stereo";
        answer = avfilter_graph_parse_ptr(graph, filters.c_str(), &inputs, &outputs, nullptr);
        avfilter_inout_free(&inputs);
        avfilter_inout_free(&outputs);
        return answer < 0 ? answer : avfilter_graph_config(graph, nullptr);
    }
};

SoundStretch::SoundStretch(std::unique_ptr<Graph> graph) : m_graph(std::move(graph)) {}
SoundStretch::~SoundStretch() = default;

Result<std::unique_ptr<SoundStretch>> SoundStretch::open(double rate, int sampleRate) {
    auto graph = std::make_unique<Graph>();
    graph->sampleRate = sampleRate;
    if (const int answer = graph->build(rate); answer < 0)
        return fail(libavError(answer, name));
    return std::unique_ptr<SoundStretch>(new SoundStretch(std::move(graph)));
}

Result<void> SoundStretch::process(const float* frames, std::size_t count, std::vector<float>& output) {
    FramePtr input;
    if (count > 0) {
        input.reset(av_frame_alloc());
        input->format = AV_SAMPLE_FMT_FLT;
        av_channel_layout_default(&input->ch_layout, 2);
        input->sample_rate = m_graph->sampleRate;
        input->nb_samples = int(count);
        if (const int answer = av_frame_get_buffer(input.get(), 0); answer < 0)
            return fail(libavError(answer, name));
        std::memcpy(input->data[0], frames, count * 2 * sizeof(float));
    }
    if (const int answer = av_buffersrc_add_frame(m_graph->source, input.get()); answer < 0 && answer != AVERROR_EOF)
        return fail(libavError(answer, name));
    const FramePtr stretched(av_frame_alloc());
    for (;;) {
        const int answer = av_buffersink_get_frame(m_graph->sink, stretched.get());
        if (answer == AVERROR(EAGAIN) || answer == AVERROR_EOF)
            return {};
        if (answer < 0)
            return fail(libavError(answer, name));
        const auto* samples = reinterpret_cast<const float*>(stretched->data[0]);
        output.insert(output.end(), samples, samples + std::ptrdiff_t(stretched->nb_samples) * 2);
        av_frame_unref(stretched.get());
    }
}

} // namespace keldra
