#pragma once

#include "base/Error.h"

#include <string>

namespace keldra {

/// Why a project cannot become something that plays.
enum class EditorCompositionError {
    noVideoTrack = 1,
    couldNotCreateCompositionTrack,
    invalidTimelineInstructions,
    invalidVideoSettings,
    invalidVideoComposition,
};

/// The error with its words; `details` follow the words of invalidVideoComposition.
inline Error makeError(EditorCompositionError code, const std::string& details = {}) {
    const auto words = [code]() -> std::string {
        switch (code) {
        case EditorCompositionError::noVideoTrack:
            return "The recording does not contain a video track.";
        case EditorCompositionError::couldNotCreateCompositionTrack:
            return "KELDRA could not prepare the editable timeline.";
        case EditorCompositionError::invalidTimelineInstructions:
            return "KELDRA could not build a continuous video timeline.";
        case EditorCompositionError::invalidVideoSettings:
            return "The editor canvas or frame rate is invalid.";
        case EditorCompositionError::invalidVideoComposition:
            return "KELDRA built an invalid video composition: ";
        }
        return {};
    };
    return {"EditorCompositionError", int(code), words() + details, {}};
}

} // namespace keldra
