// Makes a take of many bytes in a short time and ends it; bench/ending runs it beside cp.
//
//   bench_ending FILE MEGABYTES     prints a line "grown" once the growing file has that size and is on the disk, waits
//                                   for a line on standard input, ends the take, and prints the seconds that took
#include "base/SerialQueue.h"
#include "media/FileMovieWriter.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <random>
#include <thread>

namespace keldra {
namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr int framesPerSecond = 60;
constexpr int soundRate = 48000;

/// Noise, which no encoder makes small: pictures of the size that a 1080p screen's have, at a fraction of their cost.
std::vector<PixelBuffer> noisePictures() {
    std::mt19937 random(1);
    std::vector<PixelBuffer> pictures;
    for (int i = 0; i < 8; ++i) {
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, width, height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < 4 * width; ++x)
                picture.mutableRow(0, y)[x] = std::uint8_t(random());
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

[[noreturn]] void stop(const Error& error) {
    std::cerr << error.message << "\n";
    std::exit(1);
}

void waitUntilReady(const MovieWriter& writer, const MovieWriterInput& input) {
    while (!input.isReadyForMoreMediaData()) {
        if (const auto error = writer.error())
            stop(*error);
        std::this_thread::yield();
    }
}

} // namespace
} // namespace keldra

int main(int count, char** words) {
    using namespace keldra;
    if (count != 3) {
        std::cerr << "usage: bench_ending FILE MEGABYTES\n";
        return 2;
    }
    const std::string path = words[1];
    const auto wanted = std::uintmax_t(std::atoll(words[2])) << 20;
    SerialQueue answer("bench.answer");
    FileMovieWriter writer(path);
    // At this rate a picture is about as large as one of a busy 1080p screen.
    const auto video = writer.addVideoInput({width, height, 20'000'000, framesPerSecond, 2 * framesPerSecond});
    const AudioFormat voice{SampleKind::int24, soundRate, 2};
    const auto sound = writer.addAudioInput(voice);
    if (!video || !sound)
        return 1;
    if (const auto started = writer.startWriting(); !started)
        stop(started.error());
    writer.startSession(MediaTime::zero());

    const std::vector<PixelBuffer> pictures = noisePictures();
    int frame = 0;
    while (frame % framesPerSecond != 0 || std::filesystem::file_size(path) < wanted) {
        const MediaTime time(frame, framesPerSecond);
        waitUntilReady(writer, video->get());
        if (!video->get().append(pictures[std::size_t(frame) % pictures.size()], time))
            return 1;
        waitUntilReady(writer, sound->get());
        if (!sound->get().append(AudioBuffer::allocate(voice, soundRate / framesPerSecond, time)))
            return 1;
        frame += 1;
    }
    std::cout << "grown " << frame / framesPerSecond << std::endl;
    std::string line;
    std::getline(std::cin, line);

    const auto begin = std::chrono::steady_clock::now();
    std::promise<Result<void>> ended;
    writer.finishWriting(MediaTime(frame, framesPerSecond), answer,
                         [&](Result<void> result) { ended.set_value(std::move(result)); });
    if (const Result<void> result = ended.get_future().get(); !result)
        stop(result.error());
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    std::cout << seconds.count() << std::endl;
    return 0;
}
