#pragma once

#include "base/SerialQueue.h"
#include "doubles/TemporaryFolder.h"
#include "imaging/PixelBuffer.h"
#include "media/Asset.h"
#include "media/FileMovieWriter.h"
#include "media/TrackReader.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace keldra::test {

// A picture tells its number by sixteen blocks of 16 by 16 pixels, eight a row, bit 0 first, white for one.
constexpr int blockSize = 16;
constexpr int pictureWidth = 8 * blockSize;
constexpr int pictureHeight = 4 * blockSize;

inline PixelBuffer paintedPicture(int number, int width = pictureWidth, int height = pictureHeight) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int bit = x / blockSize + 8 * (y / blockSize);
            const bool isWhite = x < 8 * blockSize && bit < 16 && (number >> bit & 1) != 0;
            std::uint8_t* pixel = picture.mutableRow(0, y) + 4 * x;
            pixel[0] = pixel[1] = pixel[2] = isWhite ? 255 : 0;
            pixel[3] = 255;
        }
    return picture;
}

inline int numberIn(const PixelBuffer& picture) {
    int number = 0;
    const int step = picture.format() == PixelFormat::bgra ? 4 : 1;
    for (int bit = 0; bit < 16; ++bit) {
        const int x = bit % 8 * blockSize + blockSize / 2;
        const int y = bit / 8 * blockSize + blockSize / 2;
        number |= (picture.row(0, y)[x * step] > 128 ? 1 : 0) << bit;
    }
    return number;
}

/// The same blocks drawn by the ffmpeg program; quoted for the shell.
inline std::string paintedSource(const std::string& rate, double seconds, const std::string& size = "128x64") {
    return "-f lavfi -i \"color=black:s=" + size + ":r=" + rate + ":d=" + std::to_string(seconds) +
           ",format=gray,geq=lum='if(lt(X,128)*lt(Y,32),255*mod(floor(N/pow(2,floor(X/16)+8*floor(Y/16))),2),0)'\" ";
}

inline std::string paintedSource(int rate, double seconds, const std::string& size = "128x64") {
    return paintedSource(std::to_string(rate), seconds, size);
}

inline void runFfmpeg(const std::string& arguments) {
    const std::string command = "ffmpeg -nostdin -v error -y " + arguments;
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

inline std::vector<char> bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeBytes(const std::string& path, const std::vector<char>& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
}

/// What a track shows: numbers and times, in order.
struct ShownPicture {
    int number = 0;
    MediaTime time;
    friend bool operator==(const ShownPicture&, const ShownPicture&) = default;
};
inline void PrintTo(const ShownPicture& picture, std::ostream* stream) {
    *stream << "#" << picture.number << " at " << picture.time.description();
}

inline std::vector<ShownPicture> picturesIn(const std::string& path, TrackReader::Options options = {}) {
    std::vector<ShownPicture> shown;
    const auto asset = Asset::open(path);
    EXPECT_TRUE(asset) << (asset ? "" : asset.error().message);
    if (!asset)
        return shown;
    const auto reader = TrackReader::open(*asset, (*asset)->tracks(MediaKind::video).at(0).index, options);
    EXPECT_TRUE(reader) << (reader ? "" : reader.error().message);
    if (!reader)
        return shown;
    for (;;) {
        const auto frame = (*reader)->next();
        EXPECT_TRUE(frame) << (frame ? "" : frame.error().message);
        if (!frame || !*frame)
            return shown;
        shown.push_back({numberIn((**frame).pixels), (**frame).time});
    }
}

inline VideoTrackSettings smallTrack() {
    VideoTrackSettings settings;
    settings.width = pictureWidth;
    settings.height = pictureHeight;
    settings.averageBitRate = 1'000'000;
    settings.expectedFrameRate = 60;
    settings.maximumKeyFrameInterval = 120;
    return settings;
}

/// Gives the picture to the input as soon as it is ready; false when the writer failed, or in ten seconds was not
/// ready.
inline bool appendWhenReady(const MovieWriter& writer, MovieWriterVideoInput& input, const PixelBuffer& picture,
                            MediaTime time) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!input.isReadyForMoreMediaData()) {
        if (writer.error() || std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return input.append(picture, time);
}

/// `answer` outlives the writer, whose thread may still be on its way out of post() when the answer is here.
inline Result<void> finishAndWait(MovieWriter& writer, SerialQueue& answer, MediaTime end) {
    std::promise<Result<void>> promise;
    writer.finishWriting(end, answer, [&](Result<void> result) { promise.set_value(std::move(result)); });
    auto future = promise.get_future();
    if (future.wait_for(std::chrono::seconds(60)) != std::future_status::ready)
        return fail(Error{"test", 1, "finishWriting() did not answer.", {}});
    return future.get();
}

/// Where the writer says that it keeps what it has.
inline std::string giveUpAndWait(MovieWriter& writer, SerialQueue& answer, const std::string& recoveryFolder) {
    std::promise<std::string> promise;
    writer.giveUp(recoveryFolder, answer, [&](std::string keptAt) { promise.set_value(std::move(keptAt)); });
    auto future = promise.get_future();
    const bool isAnswered = future.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    EXPECT_TRUE(isAnswered);
    return isAnswered ? future.get() : std::string();
}

/// Records the numbers 0, 1, ... at these times, the session starting at `start`.
inline Result<void> recordTake(const std::string& path, MediaTime start, const std::vector<MediaTime>& times,
                               MediaTime end) {
    SerialQueue answer("test.answer");
    FileMovieWriter writer(path);
    TRY_LET(MovieWriterVideoInput & input, writer.addVideoInput(smallTrack()));
    TRY(writer.startWriting());
    writer.startSession(start);
    for (std::size_t i = 0; i < times.size(); ++i)
        if (!appendWhenReady(writer, input, paintedPicture(int(i)), times[i]))
            return fail(writer.error().value_or(Error{"test", 2, "A picture was refused.", {}}));
    input.markAsFinished();
    return finishAndWait(writer, answer, end);
}

/// A writer under way, from time 0.
struct Recording {
    explicit Recording(const std::string& path, VideoTrackSettings settings = smallTrack()) : writer(path) {
        auto added = writer.addVideoInput(settings);
        EXPECT_TRUE(added);
        input = &added->get();
        const auto started = writer.startWriting();
        EXPECT_TRUE(started) << (started ? "" : started.error().message);
        writer.startSession(MediaTime::zero());
    }
    bool append(int number, MediaTime time) { return appendWhenReady(writer, *input, paintedPicture(number), time); }

    SerialQueue answer{"test.answer"};
    FileMovieWriter writer;
    MovieWriterVideoInput* input = nullptr;
};

/// What libavformat's other users see of a take that is still being written, or was left so.
inline std::vector<int> numbersIn(const std::string& path) {
    std::vector<int> numbers;
    for (const ShownPicture& picture : picturesIn(path))
        numbers.push_back(picture.number);
    return numbers;
}

inline std::vector<int> upTo(int count) {
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i);
    return numbers;
}

} // namespace keldra::test
