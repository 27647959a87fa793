#pragma once

#include "base/Executor.h"
#include "composition/AssetCache.h"

#include <QUrl>

#include <map>

namespace keldra::test {

inline AssetTrack videoTrack(int index, double start, double duration, Size size = {640, 360},
                             AffineTransform preferredTransform = {}) {
    AssetTrack track;
    track.index = index;
    track.kind = MediaKind::video;
    track.timeRange = {MediaTime::fromSeconds(start, 90000), MediaTime::fromSeconds(duration, 90000)};
    track.naturalSize = size;
    track.preferredTransform = preferredTransform;
    track.nominalFrameRate = 30;
    return track;
}

inline AssetTrack audioTrack(int index, double start, double duration, int channelCount = 2) {
    AssetTrack track;
    track.index = index;
    track.kind = MediaKind::audio;
    track.timeRange = {MediaTime::fromSeconds(start, 48000), MediaTime::fromSeconds(duration, 48000)};
    track.sampleRate = 48000;
    track.channelCount = channelCount;
    return track;
}

/// Files that exist only by what is told of them. Counts how often each is opened.
class ToldAssets {
public:
    explicit ToldAssets(Executor& main) : m_main(main) {}

    void add(const std::string& path, std::vector<AssetTrack> tracks) {
        m_assets[path] = Asset::withTracks(path, MediaTime::zero(), std::move(tracks));
    }
    AssetLoader loader() {
        return [this](const std::string& path, Completion<AssetPtr> done) {
            ++openCount[path];
            m_main.post([this, path, done] {
                const auto found = m_assets.find(path);
                found == m_assets.end() ? done(fail(systemError(2, path))) : done(found->second);
            });
        };
    }

    std::map<std::string, int> openCount;

private:
    Executor& m_main;
    std::map<std::string, AssetPtr> m_assets;
};

} // namespace keldra::test
