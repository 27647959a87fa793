#include "imaging/Resample.h"

#include "imaging/Kernel.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace keldra {
namespace {

constexpr int bytesPerPixel = 4;
constexpr int columnOne = 128;
constexpr int lineOne = 256;
constexpr int maximumReduction = 128;

/// Between which two source samples a target sample lies, and the weight of the second.
struct Tap {
    int first = 0;
    int weight = 0;
};

Tap tapAt(int position, double scale, double offset, int count, int one) {
    const double at = std::clamp((position + 0.5 - offset) / scale - 0.5, 0.0, double(count - 1));
    Tap tap{int(at), int(std::lround((at - std::floor(at)) * one))};
    if (tap.weight == one)
        tap = {tap.first + 1, 0};
    if (tap.first >= count - 1)
        tap = {std::max(count - 2, 0), count > 1 ? one : 0};
    return tap;
}

std::uint64_t spreadWeights(int second) {
    const auto pair = std::uint64_t(columnOne - second) | std::uint64_t(second) << 8;
    return pair | pair << 16 | pair << 32 | pair << 48;
}

using ColumnKernel = void (*)(const std::uint8_t*, const std::int32_t*, const std::uint64_t*, std::uint8_t*, int);

void interpolateColumns(const std::uint8_t* source, const std::int32_t* columns, const std::uint64_t* weights,
                        std::uint8_t* target, int width) {
    for (int x = 0; x < width; ++x) {
        const std::uint8_t* pair = source + std::ptrdiff_t(columns[x]) * bytesPerPixel;
        const int first = int(weights[x] & 0xff);
        const int second = int(weights[x] >> 8 & 0xff);
        for (int channel = 0; channel < bytesPerPixel; ++channel)
            target[x * bytesPerPixel + channel] =
                std::uint8_t((pair[channel] * first + pair[channel + bytesPerPixel] * second + columnOne / 2) >> 7);
    }
}

#if defined(__x86_64__)
/// Four pixels: both neighbours of each as signed bytes, times unsigned weights, summed in pairs.
__attribute__((target("avx2"))) inline __m256i interpolateFour(const std::uint8_t* source, const std::int32_t* columns,
                                                               const std::uint64_t* weights) {
    const auto load = [source](std::int32_t a, std::int32_t b) __attribute__((target("avx2"))) {
        std::int64_t low;
        std::int64_t high;
        std::memcpy(&low, source + std::ptrdiff_t(a) * bytesPerPixel, sizeof low);
        std::memcpy(&high, source + std::ptrdiff_t(b) * bytesPerPixel, sizeof high);
        return _mm_set_epi64x(high, low);
    };
    const __m256i pairs =
        _mm256_inserti128_si256(_mm256_castsi128_si256(load(columns[0], columns[1])), load(columns[2], columns[3]), 1);
    const __m256i interleave = _mm256_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15, 0, 4, 1, 5, 2, 6,
                                                3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
    const __m256i shifted = _mm256_xor_si256(_mm256_shuffle_epi8(pairs, interleave), _mm256_set1_epi8(char(0x80)));
    const __m256i both = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(weights));
    const __m256i sums = _mm256_maddubs_epi16(both, shifted);
    // Back from signed: 128 * 128; and a half for rounding.
    const __m256i bias = _mm256_set1_epi16(columnOne * 128 + columnOne / 2);
    return _mm256_srli_epi16(_mm256_add_epi16(sums, bias), 7);
}

__attribute__((target("avx2"))) void interpolateColumnsAvx2(const std::uint8_t* source, const std::int32_t* columns,
                                                            const std::uint64_t* weights, std::uint8_t* target,
                                                            int width) {
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i packed = _mm256_packus_epi16(interpolateFour(source, columns + x, weights + x),
                                                   interpolateFour(source, columns + x + 4, weights + x + 4));
        const __m256i ordered = _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(target + std::ptrdiff_t(x) * bytesPerPixel), ordered);
    }
    interpolateColumns(source, columns + x, weights + x, target + std::ptrdiff_t(x) * bytesPerPixel, width - x);
}
#endif

ColumnKernel bestColumnKernel() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
        return interpolateColumnsAvx2;
#endif
    return interpolateColumns;
}

KELDRA_ROW_KERNEL void interpolateLines(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower,
                                        int weight, std::uint8_t* __restrict target, int count) {
    const auto second = std::uint16_t(weight);
    const auto first = std::uint16_t(lineOne - weight);
    for (int at = 0; at < count; ++at)
        target[at] = std::uint8_t(std::uint16_t(upper[at] * first + lower[at] * second + lineOne / 2) >> 8);
}

KELDRA_ROW_KERNEL void addLine(const std::uint8_t* __restrict line, std::uint32_t* __restrict sums, int count) {
    for (int at = 0; at < count; ++at)
        sums[at] += line[at];
}

/// Room to read two pixels at once where the picture has a single column.
PixelBuffer widened(const PixelBuffer& source) {
    PixelBuffer wide = PixelBuffer::allocate(PixelFormat::bgra, 2, source.height());
    for (int y = 0; y < source.height(); ++y)
        for (int column = 0; column < 2; ++column)
            std::memcpy(wide.mutableRow(0, y) + column * bytesPerPixel, source.row(0, y), bytesPerPixel);
    return wide;
}

} // namespace

int reductionFor(double scale) {
    return scale < 0.5 ? int(std::min(std::floor(1 / scale), double(maximumReduction))) : 1;
}

void RowResampler::begin(const PixelBuffer& source, const Placement& placement, int left, int width) {
    assert(source.format() == PixelFormat::bgra && placement.scaleX > 0 && placement.scaleY > 0 && width > 0);
    m_source = source;
    m_placement = placement;
    m_left = left;
    m_width = width;
    const int factorX = reductionFor(placement.scaleX);
    const int factorY = reductionFor(placement.scaleY);
    if (factorX > 1 || factorY > 1) {
        reduceByMean(source, factorX, factorY, m_reduced);
        m_source = m_reduced;
        m_placement.scaleX *= factorX;
        m_placement.scaleY *= factorY;
    }
    if (m_source.width() == 1)
        m_source = widened(m_source);
    prepareColumns();
    m_row.resize(std::size_t(width) * bytesPerPixel);
    for (Line& line : m_lines) {
        line.number = -1;
        line.pixels.resize(std::size_t(width) * bytesPerPixel);
    }
}

void RowResampler::prepareColumns() {
    const ColumnKey key{m_source.width(), m_placement.scaleX, m_placement.offsetX, m_left, m_width};
    if (key == m_columnKey)
        return;
    m_columnKey = key;
    m_columns.resize(std::size_t(m_width));
    m_weights.resize(std::size_t(m_width));
    bool isDirect = true;
    int firstPixel = 0;
    for (int x = 0; x < m_width; ++x) {
        const Tap tap = tapAt(m_left + x, m_placement.scaleX, m_placement.offsetX, m_source.width(), columnOne);
        m_columns[std::size_t(x)] = tap.first;
        m_weights[std::size_t(x)] = spreadWeights(tap.weight);
        const int pixel = tap.first + tap.weight / columnOne;
        if (x == 0)
            firstPixel = pixel;
        isDirect = isDirect && tap.weight % columnOne == 0 && pixel == firstPixel + x;
    }
    m_directColumn = isDirect ? firstPixel : -1;
}

const std::uint8_t* RowResampler::scaledLine(int line, int keep) {
    if (m_directColumn >= 0)
        return m_source.row(0, line) + std::ptrdiff_t(m_directColumn) * bytesPerPixel;
    for (const Line& known : m_lines)
        if (known.number == line)
            return known.pixels.data();
    static const ColumnKernel interpolate = bestColumnKernel();
    Line& made = m_lines[0].number == keep ? m_lines[1] : m_lines[0];
    interpolate(m_source.row(0, line), m_columns.data(), m_weights.data(), made.pixels.data(), m_width);
    made.number = line;
    return made.pixels.data();
}

const std::uint8_t* RowResampler::row(int y) {
    const Tap tap = tapAt(y, m_placement.scaleY, m_placement.offsetY, m_source.height(), lineOne);
    if (tap.weight == 0)
        return scaledLine(tap.first, -1);
    if (tap.weight == lineOne)
        return scaledLine(tap.first + 1, -1);
    const std::uint8_t* upper = scaledLine(tap.first, tap.first + 1);
    const std::uint8_t* lower = scaledLine(tap.first + 1, tap.first);
    interpolateLines(upper, lower, tap.weight, m_row.data(), m_width * bytesPerPixel);
    return m_row.data();
}

void reduceByMean(const PixelBuffer& source, int factorX, int factorY, PixelBuffer& target) {
    const int width = (source.width() + factorX - 1) / factorX;
    const int height = (source.height() + factorY - 1) / factorY;
    if (target.width() != width || target.height() != height)
        target = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    std::vector<std::uint32_t> sums(std::size_t(source.width()) * bytesPerPixel);
    for (int y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0u);
        const int firstLine = y * factorY;
        const int lines = std::min(factorY, source.height() - firstLine);
        for (int line = 0; line < lines; ++line)
            addLine(source.row(0, firstLine + line), sums.data(), int(sums.size()));
        std::uint8_t* row = target.mutableRow(0, y);
        for (int x = 0; x < width; ++x) {
            const int firstColumn = x * factorX;
            const int columns = std::min(factorX, source.width() - firstColumn);
            const auto count = std::uint32_t(columns * lines);
            std::uint32_t total[bytesPerPixel] = {};
            for (int column = 0; column < columns; ++column)
                for (int channel = 0; channel < bytesPerPixel; ++channel)
                    total[channel] += sums[std::size_t((firstColumn + column) * bytesPerPixel + channel)];
            for (int channel = 0; channel < bytesPerPixel; ++channel)
                row[x * bytesPerPixel + channel] = std::uint8_t((total[channel] + count / 2) / count);
        }
    }
}

} // namespace keldra
