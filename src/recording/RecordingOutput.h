#pragma once

#include <QString>
#include <QUrl>

namespace keldra {

/// What ended a recording whose file is whole.
enum class RecordingEnding {
    stopped,
    diskNearlyFull, ///< it ended by itself, as a stop ends it
};

/// A finished recording.
struct RecordingOutput {
    QUrl url;
    /// Whether the clicks' sounds are in the file as a track of their own.
    bool hasLiveClickTrack = false;
    RecordingEnding ending = RecordingEnding::stopped;
    friend bool operator==(const RecordingOutput&, const RecordingOutput&) = default;
};

/// What the user is told of an ending that nobody asked for; empty for a stop.
QString endingWords(RecordingEnding ending);

} // namespace keldra
