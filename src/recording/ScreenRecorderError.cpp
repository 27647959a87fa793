#include "recording/ScreenRecorderError.h"

namespace keldra {
namespace {

const char* words(ScreenRecorderError error) {
    switch (error) {
    case ScreenRecorderError::couldNotCreateScreenInput:
        return "Could not prepare screen capture.";
    case ScreenRecorderError::couldNotAddScreenInput:
        return "Could not connect the selected display.";
    case ScreenRecorderError::couldNotAddMicrophoneInput:
        return "Could not connect the microphone.";
    case ScreenRecorderError::couldNotAddMovieOutput:
        return "Could not prepare the output file.";
    case ScreenRecorderError::couldNotFindDisplay:
        return "Could not find the selected display.";
    case ScreenRecorderError::couldNotFindWindow:
        return "Could not find the selected window.";
    case ScreenRecorderError::couldNotPrepareStream:
        return "Could not prepare the capture stream.";
    case ScreenRecorderError::invalidSelection:
        return "The capture selection is invalid.";
    case ScreenRecorderError::outputDirectoryUnavailable:
        return "The output folder is unavailable or not writable.";
    case ScreenRecorderError::tooLittleFreeSpace:
        return "There is too little free space on the output folder's disk to record.";
    }
    return "";
}

} // namespace

Error makeError(ScreenRecorderError error) {
    return Error{"ScreenRecorderError", int(error), words(error), {}};
}

} // namespace keldra
