#include "recording/ScreenRecorderError.h"

#include <QtGlobal>

namespace keldra {
namespace {

const char* words(ScreenRecorderError error) {
    switch (error) {
    case ScreenRecorderError::couldNotCreateScreenInput:
        return QT_TRANSLATE_NOOP("Messages", "Could not prepare screen capture.");
    case ScreenRecorderError::couldNotAddScreenInput:
        return QT_TRANSLATE_NOOP("Messages", "Could not connect the selected display.");
    case ScreenRecorderError::couldNotAddMicrophoneInput:
        return QT_TRANSLATE_NOOP("Messages", "Could not connect the microphone.");
    case ScreenRecorderError::couldNotAddMovieOutput:
        return QT_TRANSLATE_NOOP("Messages", "Could not prepare the output file.");
    case ScreenRecorderError::couldNotFindDisplay:
        return QT_TRANSLATE_NOOP("Messages", "Could not find the selected display.");
    case ScreenRecorderError::couldNotFindWindow:
        return QT_TRANSLATE_NOOP("Messages", "Could not find the selected window.");
    case ScreenRecorderError::couldNotPrepareStream:
        return QT_TRANSLATE_NOOP("Messages", "Could not prepare the capture stream.");
    case ScreenRecorderError::invalidSelection:
        return QT_TRANSLATE_NOOP("Messages", "The capture selection is invalid.");
    case ScreenRecorderError::outputDirectoryUnavailable:
        return QT_TRANSLATE_NOOP("Messages", "The output folder is unavailable or not writable.");
    case ScreenRecorderError::tooLittleFreeSpace:
        return QT_TRANSLATE_NOOP("Messages", "There is too little free space on the output folder's disk to record.");
    }
    return "";
}

} // namespace

Error makeError(ScreenRecorderError error) {
    return Error{"ScreenRecorderError", int(error), words(error), {}};
}

} // namespace keldra
