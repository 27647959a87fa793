#pragma once

#include "media/AudioDecoder.h"

#include <cstdint>

// For the .cpp files of this folder only.

namespace keldra {

/// The mean of all channels for the sample formats that most files have: one or two channels of 16-bit or float
/// samples. False for others.
[[nodiscard]] bool mixToMono(const DecodedSound& sound, std::int16_t* mono);

} // namespace keldra
