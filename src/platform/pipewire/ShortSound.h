#pragma once

#include <QString>

#include <vector>

namespace keldra {

/// The short sounds that we know by name, "Tink" and "Hero": interleaved stereo at AudioSink's rate, from silence to
/// silence, never beyond a quarter of full scale. Empty for other names.
std::vector<float> shortSound(const QString& name);

} // namespace keldra
