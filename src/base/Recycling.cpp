#include "base/Recycling.h"

namespace keldra {

std::pmr::memory_resource& recycledMemory() {
    // Blocks of sound are the largest; pictures have pools of their own.
    constexpr std::size_t largestPiece = std::size_t(64) << 10;
    constexpr std::size_t mostPiecesAtOnce = 64;
    // Never ends, since a thread's last work may still give something back.
    static auto* const memory =
        new std::pmr::synchronized_pool_resource(std::pmr::pool_options{mostPiecesAtOnce, largestPiece});
    return *memory;
}

} // namespace keldra
