#pragma once

namespace keldra {

/// What a click sounds like in a recording: made by a formula, or taken from a sound file of ours.
enum class ClickSoundStyle { soft, classic };

} // namespace keldra
