#pragma once

#include <QUrl>

namespace keldra {

/// A finished recording.
struct RecordingOutput {
    QUrl url;
    /// Whether the clicks' sounds are in the file as a track of their own.
    bool hasLiveClickTrack = false;
    friend bool operator==(const RecordingOutput&, const RecordingOutput&) = default;
};

} // namespace keldra
