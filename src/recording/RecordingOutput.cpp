#include "recording/RecordingOutput.h"

namespace keldra {

QString endingWords(RecordingEnding ending) {
    switch (ending) {
    case RecordingEnding::stopped:
        return {};
    case RecordingEnding::diskNearlyFull:
        return QStringLiteral(
            QT_TRANSLATE_NOOP("Messages", "The disk is nearly full, so the recording was ended. It is saved."));
    }
    return {};
}

} // namespace keldra
