#include "recording/ClickMix.h"

#include "media/Asset.h"
#include "media/MovieSound.h"
#include "recording/ClickAudioChunkMixer.h"

#include <QFileInfo>
#include <QUuid>

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Beside the movie and out of sight.
std::string temporaryPathFor(const std::string& path) {
    const QFileInfo movie(QString::fromStdString(path));
    return (movie.path() + QStringLiteral("/.keldra-clicks-") + QUuid::createUuid().toString(QUuid::WithoutBraces) +
            QStringLiteral(".mov"))
        .toStdString();
}

} // namespace

Result<void> mixClicksIntoMovie(const std::string& path, std::vector<double> times, ClickSoundStyle style) {
    TRY_LET(const AssetPtr movie, Asset::open(path));
    const double duration = movie->duration().seconds();
    std::erase_if(times, [duration](double time) { return !(time >= 0 && time < duration); });
    if (times.empty())
        return {};
    std::sort(times.begin(), times.end());
    std::vector<PendingClick> clicks;
    for (const double time : times)
        clicks.push_back({std::llround(time * ClickAudioChunkMixer::sampleRate)});

    std::vector<float> waveform = ClickAudioChunkMixer::loadClickWaveform(style);
    for (float& sample : waveform)
        sample *= ClickAudioChunkMixer::volume;
    return addSoundToMovie(path, temporaryPathFor(path), [&](std::int64_t first, std::int64_t count) {
        return ClickAudioChunkMixer::mixChunk(first, int(count), clicks, waveform);
    });
}

} // namespace keldra
