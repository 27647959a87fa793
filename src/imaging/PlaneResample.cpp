#include "imaging/PlaneResample.h"

#include "imaging/Kernel.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace keldra {
namespace {

constexpr int groupBytes = 16;

/// How one axis of a picture is resampled: by blocks of `factor` pixels, two of which make a target pixel.
class AxisChain {
public:
    AxisChain(double scale, double offset, int pixelCount)
        : m_offset(offset)
        , m_pixelCount(pixelCount)
        , m_factor(reductionFor(scale))
        , m_blockScale(scale * m_factor)
        , m_blockCount((pixelCount + m_factor - 1) / m_factor) {}

    /// Where a target pixel lies, in blocks.
    double blockAt(int position) const {
        const double at = (position + 0.5 - m_offset) / m_blockScale - 0.5;
        return std::clamp(at, 0.0, double(m_blockCount - 1));
    }
    int firstPixel(int block) const { return block * m_factor; }
    int endPixel(int block) const { return std::min((block + 1) * m_factor, m_pixelCount); }

private:
    double m_offset;
    int m_pixelCount;
    int m_factor;
    double m_blockScale;
    int m_blockCount;
};

/// Whole weights that sum up to `TapTable::one`, none off by more than one.
void writeWeights(const std::vector<double>& exact, std::uint8_t* target) {
    double wanted = 0;
    int given = 0;
    for (std::size_t at = 0; at < exact.size(); ++at) {
        wanted += exact[at] * TapTable::one;
        target[at] = std::uint8_t(std::lround(wanted) - given);
        given += target[at];
    }
}

KELDRA_ROW_KERNEL void mixTwoLines(const std::uint8_t* __restrict a, const std::uint8_t* __restrict b, int weightA,
                                   int weightB, std::uint8_t* __restrict target, int count) {
    const auto first = std::uint16_t(weightA);
    const auto second = std::uint16_t(weightB);
    for (int at = 0; at < count; ++at)
        target[at] = std::uint8_t(std::uint16_t(a[at] * first + b[at] * second + TapTable::one / 2) >> 7);
}

KELDRA_ROW_KERNEL void addWeighted(const std::uint8_t* __restrict line, int weight, std::uint16_t* __restrict sums,
                                   int count) {
    const auto factor = std::uint16_t(weight);
    for (int at = 0; at < count; ++at)
        sums[at] = std::uint16_t(sums[at] + line[at] * factor);
}

KELDRA_ROW_KERNEL void writeSums(const std::uint16_t* __restrict sums, std::uint8_t* __restrict target, int count) {
    for (int at = 0; at < count; ++at)
        target[at] = std::uint8_t(sums[at] >> 7);
}

} // namespace

void TapTable::make(double scale, double offset, int pixelCount, int pixelsPerSample, int firstTarget,
                    int targetCount) {
    const AxisChain axis(scale, offset, pixelCount);
    const int sampleCount = (pixelCount + pixelsPerSample - 1) / pixelsPerSample;
    firsts.resize(std::size_t(targetCount));
    tapCount = 2;
    for (int at = 0; at < targetCount; ++at) {
        const int pixel = (firstTarget + at) * pixelsPerSample;
        firsts[std::size_t(at)] = axis.firstPixel(int(axis.blockAt(pixel))) / pixelsPerSample;
        const int lastBlock = int(std::ceil(axis.blockAt(pixel + pixelsPerSample - 1)));
        const int last = (axis.endPixel(lastBlock) - 1) / pixelsPerSample;
        while (tapCount <= last - firsts[std::size_t(at)])
            tapCount *= 2;
    }
    weights.resize(firsts.size() * std::size_t(tapCount));
    m_exact.resize(std::size_t(tapCount));
    for (int at = 0; at < targetCount; ++at) {
        // Taps that weigh nothing must not lie beyond the end.
        int& first = firsts[std::size_t(at)];
        first = std::max(0, std::min(first, sampleCount - tapCount));
        std::fill(m_exact.begin(), m_exact.end(), 0.0);
        for (int pixel = (firstTarget + at) * pixelsPerSample; pixel < (firstTarget + at + 1) * pixelsPerSample;
             ++pixel) {
            const double position = axis.blockAt(pixel);
            const int block = int(position);
            const auto gather = [&](int number, double weight) {
                const int begin = axis.firstPixel(number);
                const int end = axis.endPixel(number);
                for (int source = begin; source < end; ++source)
                    m_exact[std::size_t(source / pixelsPerSample - first)] += weight / (end - begin) / pixelsPerSample;
            };
            gather(block, 1 - (position - block));
            if (position > block)
                gather(block + 1, position - block);
        }
        writeWeights(m_exact, &weights[std::size_t(at) * std::size_t(tapCount)]);
    }
}

void PlaneResampler::begin(const PixelBuffer& source, int plane, const Placement& placement, const PixelRect& target) {
    assert(source.format() == PixelFormat::i420 && placement.scaleX > 0 && placement.scaleY > 0 && !target.isEmpty());
    m_source = source;
    m_plane = plane;
    m_top = target.y;
    m_width = target.width;
    const int pixelsPerSample = plane == 0 ? 1 : 2;
    const bool isNew = prepareAxis(
        m_columns, {placement.scaleX, placement.offsetX, source.width(), target.x, target.width, pixelsPerSample});
    prepareAxis(m_lines,
                {placement.scaleY, placement.offsetY, source.height(), target.y, target.height, pixelsPerSample});
    if (isNew)
        prepareGroups();
    // Groups are written whole, and in pairs.
    const std::size_t rowBytes = std::size_t(m_width) + groupBytes;
    m_row.resize(rowBytes);
    m_sums.resize(rowBytes);
    // Their number only grows: lines are memory.
    m_made.resize(std::max(m_made.size(), std::size_t(m_lines.taps.tapCount)));
    for (Line& line : m_made) {
        line.number = -1;
        line.samples.resize(rowBytes);
    }
}

bool PlaneResampler::prepareAxis(Axis& axis, const AxisKey& key) {
    if (axis.key == key)
        return false;
    axis.key = key;
    axis.taps.make(key.scale, key.offset, key.count, key.pixelsPerSample, key.first, key.targetCount);
    const auto taps = std::size_t(axis.taps.tapCount);
    bool isDirect = true;
    int firstSample = 0;
    for (std::size_t at = 0; at < axis.taps.firsts.size() && isDirect; ++at) {
        const std::uint8_t* weights = &axis.taps.weights[at * taps];
        const std::uint8_t* whole = std::find(weights, weights + taps, std::uint8_t(TapTable::one));
        const int sample = axis.taps.firsts[at] + int(whole - weights);
        if (at == 0)
            firstSample = sample;
        isDirect = whole != weights + taps && sample == firstSample + int(at);
    }
    axis.directFirst = isDirect ? firstSample : -1;
    return true;
}

void PlaneResampler::prepareGroups() {
    m_groups.clear();
#if defined(__x86_64__)
    const TapTable& taps = m_columns.taps;
    const int sampleCount = m_source.planeWidth(m_plane);
    if (m_columns.directFirst >= 0 || taps.tapCount > 4 || sampleCount < groupBytes || !__builtin_cpu_supports("avx2"))
        return;
    const int columns = groupBytes / taps.tapCount;
    const int count = (m_width + 2 * columns - 1) / (2 * columns) * 2;
    m_groups.resize(std::size_t(count));
    for (int group = 0; group < count; ++group) {
        Group& made = m_groups[std::size_t(group)];
        const auto columnAt = [&](int at) { return std::size_t(std::min(group * columns + at, m_width - 1)); };
        made.begin = std::min(taps.firsts[columnAt(0)], sampleCount - groupBytes);
        for (int at = 0; at < columns; ++at) {
            const int first = taps.firsts[columnAt(at)] - made.begin;
            if (first + taps.tapCount > groupBytes) {
                m_groups.clear();
                return;
            }
            for (int tap = 0; tap < taps.tapCount; ++tap) {
                made.picks[at * taps.tapCount + tap] = std::uint8_t(first + tap);
                made.weights[at * taps.tapCount + tap] =
                    taps.weights[columnAt(at) * std::size_t(taps.tapCount) + std::size_t(tap)];
            }
        }
    }
#endif
}

void PlaneResampler::makeLine(const std::uint8_t* source, std::uint8_t* target) const {
    const TapTable& taps = m_columns.taps;
    if (!m_groups.empty())
        return makeGroups(m_groups, taps.tapCount, source, target);
    const int tapsInside = std::min(taps.tapCount, m_source.planeWidth(m_plane));
    const std::uint8_t* weights = taps.weights.data();
    for (int x = 0; x < m_width; ++x, weights += taps.tapCount) {
        int sum = TapTable::one / 2;
        for (int tap = 0; tap < tapsInside; ++tap)
            sum += weights[tap] * source[taps.firsts[std::size_t(x)] + tap];
        target[x] = std::uint8_t(sum >> 7);
    }
}

#if defined(__x86_64__)
namespace {

__attribute__((target("avx2"))) inline __m256i both(const std::uint8_t* low, const std::uint8_t* high) {
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(high), reinterpret_cast<const __m128i*>(low));
}

} // namespace

__attribute__((target("avx2"))) void PlaneResampler::makeGroups(const std::vector<Group>& groups, int tapCount,
                                                                const std::uint8_t* source, std::uint8_t* target) {
    const __m256i sign = _mm256_set1_epi8(char(0x80));
    // Samples are made signed for the multiplication and back: 128 * 128; and a half for rounding.
    constexpr int bias = TapTable::one * 128 + TapTable::one / 2;
    for (std::size_t at = 0; at < groups.size(); at += 2) {
        const Group& low = groups[at];
        const Group& high = groups[at + 1];
        const __m256i picked =
            _mm256_shuffle_epi8(both(source + low.begin, source + high.begin), both(low.picks, high.picks));
        const __m256i pairs = _mm256_maddubs_epi16(both(low.weights, high.weights), _mm256_xor_si256(picked, sign));
        if (tapCount == 2) {
            const __m256i values = _mm256_srli_epi16(_mm256_add_epi16(pairs, _mm256_set1_epi16(bias)), 7);
            const __m128i packed =
                _mm_packus_epi16(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(target), packed);
            target += 16;
        } else {
            const __m256i sums = _mm256_madd_epi16(pairs, _mm256_set1_epi16(1));
            const __m256i values = _mm256_srli_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(bias)), 7);
            const __m128i packed = _mm_packs_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(target), _mm_packus_epi16(packed, packed));
            target += 8;
        }
    }
}
#else
void PlaneResampler::makeGroups(const std::vector<Group>&, int, const std::uint8_t*, std::uint8_t*) {}
#endif

const std::uint8_t* PlaneResampler::scaledLine(int number) {
    const std::uint8_t* source = m_source.row(m_plane, number);
    if (m_columns.directFirst >= 0)
        return source + m_columns.directFirst;
    Line& line = m_made[std::size_t(number) % m_made.size()];
    if (line.number != number) {
        makeLine(source, line.samples.data());
        line.number = number;
    }
    return line.samples.data();
}

const std::uint8_t* PlaneResampler::row(int y) {
    const TapTable& taps = m_lines.taps;
    const auto at = std::size_t(y - m_top);
    const std::uint8_t* weights = &taps.weights[at * std::size_t(taps.tapCount)];
    // Lines that weigh nothing are neither made nor added.
    int begin = 0;
    int end = taps.tapCount;
    while (weights[begin] == 0)
        ++begin;
    while (weights[end - 1] == 0)
        --end;
    const int first = taps.firsts[at];
    if (end - begin == 1)
        return scaledLine(first + begin);
    if (end - begin == 2) {
        mixTwoLines(scaledLine(first + begin), scaledLine(first + begin + 1), weights[begin], weights[begin + 1],
                    m_row.data(), m_width);
        return m_row.data();
    }
    std::fill(m_sums.begin(), m_sums.end(), std::uint16_t(TapTable::one / 2));
    for (int tap = begin; tap < end; ++tap)
        addWeighted(scaledLine(first + tap), weights[tap], m_sums.data(), m_width);
    writeSums(m_sums.data(), m_row.data(), m_width);
    return m_row.data();
}

} // namespace keldra
