#pragma once

#include "media/H264Encoder.h"

#include <optional>
#include <string>

namespace keldra {

/// Who may encode an export. `automatic` takes the first graphics processor that proves itself.
enum class EncoderChoice { automatic, x264, vaapi, nvenc, qsv };

/// "auto", "x264", "vaapi", "nvenc", "qsv".
std::optional<EncoderChoice> encoderChoice(const std::string& name);

/// The settings with an implementation that has encoded a few frames of that size; libx264 where no other does, which
/// is logged. Takes as long as the devices take to answer.
H264Settings withProvenEncoder(EncoderChoice choice, H264Settings settings);

} // namespace keldra
