#pragma once

#include <QUuid>

namespace keldra {

enum class EditorTrackKind { video, audio };

/// A row of the timeline.
struct EditorTrack {
    QUuid id;
    /// 0 is the bottom row.
    qint64 index = 0;
    EditorTrackKind kind = EditorTrackKind::video;
    /// Mutes every clip of the row.
    bool isMuted = false;
    friend bool operator==(const EditorTrack&, const EditorTrack&) = default;
};

} // namespace keldra
