#pragma once

namespace keldra {

/// Where the recorder stands. `failed` allows all that `idle` allows.
enum class RecordingState { idle, requestingPermission, countdown, recording, stopping, failed };

} // namespace keldra
