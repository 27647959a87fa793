#pragma once

#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>
#include <utility>

namespace keldra {

enum class EditorMediaKind { video, image, audio };

/// A clip: a piece of a media file placed on the timeline. Times are seconds; a clip plays at its media's speed. A
/// field that is not set means what its comment says.
struct EditorSegment {
    QUuid id;
    /// Where in its media the clip begins.
    double sourceStart = 0;
    double duration = 0;
    double timelineStart = 0;
    qint64 trackIndex = 0;
    /// The project's own source.
    std::optional<QUrl> sourceURL;
    /// The project's own.
    std::optional<double> sourceDuration;
    /// The project's own video.
    std::optional<EditorMediaKind> mediaKind;
    /// The file's name.
    std::optional<QString> displayName;
    /// These four are kept for whoever wrote them and have no effect on the output.
    std::optional<double> positionX;
    std::optional<double> positionY;
    std::optional<double> scale;
    std::optional<double> rotationDegrees;
    /// 1.
    std::optional<double> opacity;
    /// None.
    std::optional<double> fadeInDuration;
    std::optional<double> fadeOutDuration;
    /// 1.
    std::optional<double> volume;
    /// False.
    std::optional<bool> isMuted;

    double timelineEnd() const { return timelineStart + duration; }
    friend bool operator==(const EditorSegment&, const EditorSegment&) = default;
};

/// Seconds of fade at a clip's head and tail.
struct FadeLengths {
    double fadeIn = 0;
    double fadeOut = 0;
    friend bool operator==(const FadeLengths&, const FadeLengths&) = default;
};

/// The fades that fit the clip: never negative, and together never longer than it. Fades that ask for more shrink
/// together and keep their ratio.
FadeLengths normalizedFades(const EditorSegment& segment);

} // namespace keldra
