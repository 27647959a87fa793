#pragma once

namespace keldra {

/// Seconds that are counted down before a recording.
enum class CountdownDuration { three = 3, five = 5, ten = 10 };

} // namespace keldra
