#include "recording/ClassicClickSound.h"

#include "media/Asset.h"
#include "media/Composition.h"
#include "media/MixReader.h"
#include "recording/ClickAudioChunkMixer.h"

#include <QFile>
#include <QTemporaryFile>
#include <QtCore/qglobal.h>

/// Outside every namespace, as the macro demands; without it a static library's resources are left out.
static void includeSounds() {
    Q_INIT_RESOURCE(sounds);
}

namespace keldra {
namespace {

Result<std::vector<float>> readSound(const std::string& path) {
    TRY_LET(const AssetPtr asset, Asset::open(path));
    const auto composition = std::make_shared<Composition>();
    for (const AssetTrack& track : asset->tracks(MediaKind::audio))
        TRY(composition->addTrack(MediaKind::audio)
                .insertTimeRange(track.timeRange, asset, track.index, MediaTime::zero()));
    MixReader reader(composition, std::nullopt, {ClickAudioChunkMixer::sampleRate, 1});
    std::vector<float> samples;
    for (;;) {
        TRY_LET(const AudioBuffer part, reader.next(4096));
        if (!part)
            return samples;
        samples.insert(samples.end(), part.samples<float>(), part.samples<float>() + part.frameCount());
    }
}

} // namespace

Result<std::vector<float>> readClassicClickSound() {
    includeSounds();
    QFile resource(QStringLiteral(":/sounds/clic_classic.mp3"));
    if (!resource.open(QIODevice::ReadOnly))
        return fail(Error{"ClickSound", 1, "clic_classic.mp3: " + resource.errorString().toStdString(), {}});
    // The decoder wants a file that it can open by name.
    QTemporaryFile copy;
    if (!copy.open() || copy.write(resource.readAll()) < 0 || !copy.flush())
        return fail(
            Error{"ClickSound", 2, copy.fileName().toStdString() + ": " + copy.errorString().toStdString(), {}});
    return readSound(copy.fileName().toStdString());
}

} // namespace keldra
