#include "media/Libav.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <limits>
#include <mutex>
#include <string>

namespace keldra {
namespace {

thread_local std::string lastLine;

void keepLine(void* subject, int level, const char* format, std::va_list arguments) {
    if (level > AV_LOG_ERROR)
        return;
    std::array<char, 512> line{};
    int printPrefix = 1;
    av_log_format_line2(subject, level, format, arguments, line.data(), int(line.size()), &printPrefix);
    lastLine = line.data();
    while (!lastLine.empty() && lastLine.back() == '\n')
        lastLine.pop_back();
}

} // namespace

void quietLibav() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(keepLine); });
    lastLine.clear();
}

std::string libavWords(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> words{};
    av_strerror(code, words.data(), words.size());
    return words.data();
}

Error libavError(int code, std::string_view subject) {
    Error error{"libav", code, libavWords(code), {}};
    if (!subject.empty())
        error.message = std::string(subject) + ": " + error.message;
    if (!lastLine.empty())
        error.info.emplace("libav", lastLine);
    return error;
}

MediaTime timeOf(std::int64_t ticks, AVRational timeBase) {
    return MediaTime(ticks, timeBase.den) * timeBase.num;
}

int squarePixelWidth(int width, AVRational sampleAspectRatio) {
    const double ratio = sampleAspectRatio.num > 0 && sampleAspectRatio.den > 0 ? av_q2d(sampleAspectRatio) : 1;
    // Beyond this no camera goes, but damaged files do.
    constexpr double widest = 16;
    const bool isPlausible = ratio >= 1 / widest && ratio <= widest;
    return isPlausible ? std::max(1, int(std::lround(width * ratio))) : width;
}

std::int64_t ticksAtOrBefore(MediaTime time, AVRational timeBase) {
    __extension__ using Wide = __int128;
    const Wide numerator = Wide(time.value()) * timeBase.den;
    const Wide denominator = Wide(time.timescale()) * timeBase.num;
    Wide ticks = numerator / denominator;
    if (numerator % denominator < 0)
        ticks -= 1;
    using Limits = std::numeric_limits<std::int64_t>;
    return std::int64_t(ticks < Limits::min() ? Limits::min() : ticks > Limits::max() ? Limits::max() : ticks);
}

} // namespace keldra
