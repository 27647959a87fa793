#pragma once

#include <cstdint>

namespace keldra::test {

/// How many pieces of memory our code, the standard library and Qt have asked for since the program began. The program
/// that links this counts; what libav, its codecs and the C library ask for themselves is left out. Any thread.
std::int64_t allocationCount();

} // namespace keldra::test
