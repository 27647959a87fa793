#pragma once

#include "base/Error.h"

namespace keldra {

/// Why a recording could not be made, where the desktop has no words of its own.
enum class ScreenRecorderError {
    couldNotCreateScreenInput,
    couldNotAddScreenInput,
    couldNotAddMicrophoneInput,
    couldNotAddMovieOutput,
    couldNotFindDisplay,
    couldNotFindWindow,
    couldNotPrepareStream,
    invalidSelection,
    outputDirectoryUnavailable,
    tooLittleFreeSpace,
};

/// Domain "ScreenRecorderError", with the words a user reads.
Error makeError(ScreenRecorderError error);

} // namespace keldra
