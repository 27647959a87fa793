#pragma once

#include "media/H264Encoder.h"

#include <functional>
#include <optional>
#include <string>

namespace keldra {

/// The finest preset of x264 whose speed, in frames a second, leaves enough room for all else that happens while a
/// screen is recorded at that rate. `speedOf` is asked for the finest first, and not for the plainest.
std::string choosePreset(double frameRate, const std::function<double(const std::string&)>& speedOf);

/// The same by a trial on this machine, of at most 200 ms, with moving pictures of that size.
/// KELDRA_X264_PRESET in the environment forces one without a trial.
std::string tryPresets(const H264Settings& settings);

/// The forced preset, else the plainest: what is used without a trial.
std::string untriedPreset();

} // namespace keldra
