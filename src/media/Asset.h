#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "media/AssetTrack.h"

#include <memory>
#include <string>
#include <vector>

namespace keldra {

class Asset;
using AssetPtr = std::shared_ptr<const Asset>;

/// A media file that was opened and looked at once. Immutable; any thread. It holds no open file.
class Asset {
public:
    /// Opens, reads the head and closes again.
    /// Errors: the system's or libav's own words, after the file's name.
    [[nodiscard]] static Result<AssetPtr> open(const std::string& path);
    /// The same on `worker`, answered on `answer`.
    static void load(const std::string& path, Executor& worker, Executor& answer, Completion<AssetPtr> done);

    /// A file that is told, not read.
    static AssetPtr withTracks(std::string path, MediaTime duration, std::vector<AssetTrack> tracks) {
        const std::shared_ptr<Asset> asset(new Asset);
        asset->m_path = std::move(path);
        asset->m_duration = duration;
        asset->m_tracks = std::move(tracks);
        return asset;
    }

    const std::string& path() const { return m_path; }
    /// From zero to the end of the longest track.
    MediaTime duration() const { return m_duration; }
    const std::vector<AssetTrack>& tracks() const { return m_tracks; }
    /// In the file's order.
    std::vector<AssetTrack> tracks(MediaKind kind) const;

private:
    Asset() = default;

    std::string m_path;
    MediaTime m_duration = MediaTime::zero();
    std::vector<AssetTrack> m_tracks;
};

} // namespace keldra
