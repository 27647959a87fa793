#include "media/Asset.h"
#include "media/AudioTrackReader.h"
#include "media/MixReader.h"
#include "media/TrackReader.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

// Hostile bytes through the reading of movies. What is refused is refused in one line; what is read comes in the order
// of time, with pixels, and ends.

namespace {

using namespace keldra;

void require(bool isTrue) {
    if (!isTrue)
        std::abort();
}

void checkWords(const Error& error) {
    require(!error.message.empty() && error.message.find('\n') == std::string::npos);
}

/// A file that lives in memory.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* bytes, std::size_t size) : m_descriptor(::memfd_create("movie", MFD_CLOEXEC)) {
        require(m_descriptor >= 0 && ::write(m_descriptor, bytes, size) == ssize_t(size));
    }
    ~MemoryFile() { ::close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

/// Reads on for a few pictures; false at an end or an error.
bool readSome(TrackReader& reader, int count) {
    MediaTime last = MediaTime::indefinite();
    for (int number = 0; number < count; ++number) {
        const auto frame = reader.next();
        if (!frame)
            checkWords(frame.error());
        if (!frame || !*frame)
            return false;
        require((**frame).pixels.width() > 0 && (**frame).pixels.height() > 0);
        require(number == 0 || (**frame).time > last);
        last = (**frame).time;
    }
    return true;
}

void readTrack(const AssetPtr& asset, const AssetTrack& track, PixelFormat format) {
    const auto reader = TrackReader::open(asset, track.index, {format, 1});
    if (!reader)
        return checkWords(reader.error());
    (void)readSome(**reader, 12);
    const MediaTime end = track.timeRange.end();
    for (const MediaTime time : {MediaTime(1, 3), end, MediaTime::zero(), end - MediaTime(1, 10)}) {
        const auto sought = (*reader)->seek(time);
        if (!sought)
            return checkWords(sought.error());
        (void)readSome(**reader, 3);
    }
}

/// Reads on for a few buffers; false at an end or an error.
bool hearSome(AudioTrackReader& reader, int count) {
    MediaTime end = MediaTime::zero();
    for (int number = 0; number < count; ++number) {
        const auto sound = reader.next();
        if (!sound)
            checkWords(sound.error());
        if (!sound || !*sound)
            return false;
        require((**sound).frameCount() > 0 && (**sound).format() == reader.format());
        require(number == 0 || (**sound).time() >= end);
        end = (**sound).endTime();
    }
    return true;
}

void hearTrack(const AssetPtr& asset, const AssetTrack& track, bool isMono) {
    const auto reader =
        AudioTrackReader::open(asset, track.index, {isMono ? SampleKind::int16 : SampleKind::float32, isMono});
    if (!reader)
        return checkWords(reader.error());
    (void)hearSome(**reader, 12);
    const MediaTime end = track.timeRange.end();
    for (const MediaTime time : {MediaTime(1, 3), end, MediaTime::zero(), end - MediaTime(1, 10)}) {
        const auto sought = (*reader)->seek(time);
        if (!sought)
            return checkWords(sought.error());
        (void)hearSome(**reader, 3);
    }
}

/// As the sound of a clip that the whole track is.
void mixTrack(const AssetPtr& asset, const AssetTrack& track) {
    if (track.timeRange.isEmpty())
        return;
    const auto composition = std::make_shared<Composition>();
    if (!composition->addTrack(MediaKind::audio)
             .insertTimeRange(track.timeRange, asset, track.index, MediaTime::zero()))
        return;
    MixReader mix(composition, std::nullopt, {});
    for (int number = 0; number < 4; ++number) {
        const auto sound = mix.next(4800);
        if (!sound)
            return checkWords(sound.error());
        require(sound->frameCount() <= 4800);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0;
    const MemoryFile file(bytes, size);
    const auto asset = Asset::open(file.path());
    if (!asset) {
        checkWords(asset.error());
        return 0;
    }
    require(!(*asset)->tracks().empty());
    for (const AssetTrack& track : (*asset)->tracks()) {
        require(track.timeRange.start.isNumeric() && track.timeRange.start >= MediaTime::zero());
        require(track.timeRange.duration.isNumeric() && track.timeRange.duration >= MediaTime::zero());
    }
    const auto pictures = (*asset)->tracks(MediaKind::video);
    for (std::size_t at = 0; at < std::min<std::size_t>(pictures.size(), 2); ++at)
        readTrack(*asset, pictures[at], bytes[size / 2] % 2 == 0 ? PixelFormat::bgra : PixelFormat::i420);
    const auto sounds = (*asset)->tracks(MediaKind::audio);
    for (std::size_t at = 0; at < std::min<std::size_t>(sounds.size(), 2); ++at) {
        hearTrack(*asset, sounds[at], bytes[size / 3] % 2 == 0);
        mixTrack(*asset, sounds[at]);
    }
    return 0;
}
