#pragma once

#include "project/EditorProject.h"

#include <QSizeF>
#include <QTransform>

#include <optional>

namespace keldra {

/// What is known of a media file before it is edited.
struct SourceFacts {
    struct Video {
        /// Frames per second.
        double nominalFrameRate = 0;
        /// Pixels as coded.
        QSizeF naturalSize;
        /// Turns the coded picture upright.
        QTransform preferredTransform;
    };
    double durationSeconds = 0;
    /// The first video track, when there is one.
    std::optional<Video> video;
};

/// The project for a source seen for the first time: all of it as one clip, on the fresh canvas style.
EditorProject makeFreshProject(const QUrl& sourceURL, bool hasLiveClickTrack, const SourceFacts& facts,
                               const QDateTime& now);

} // namespace keldra
