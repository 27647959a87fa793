#include "media/BitBudget.h"

#include <algorithm>

namespace keldra {
namespace {

constexpr double savedSeconds = 2;
/// Finer than this nobody sees.
constexpr double finest = 16;
/// When nothing is left.
constexpr double coarse = 45;
constexpr double coarsest = 51;

} // namespace

BitBudget::BitBudget(std::int64_t bitsPerSecond)
    : m_bitsPerSecond(double(bitsPerSecond)), m_mostBits(savedSeconds * m_bitsPerSecond), m_bits(m_mostBits) {}

double BitBudget::rateFactorAt(double seconds) {
    const double earned = m_bitsPerSecond * std::max(0.0, seconds - m_seconds);
    m_seconds = std::max(m_seconds, seconds);
    m_bits = std::clamp(m_bits + earned, -m_mostBits, m_mostBits);
    return std::min(coarsest, finest + (coarse - finest) * (1 - m_bits / m_mostBits));
}

} // namespace keldra
