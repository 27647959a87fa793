#include "TestMovies.h"
#include "base/HostClock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>

namespace keldra {
namespace {

using namespace test;

MediaTime micro(std::int64_t value) {
    return MediaTime(value, HostClock::timescale);
}

struct TakeRow {
    const char* name;
    MediaTime start;
    std::vector<MediaTime> times;
    MediaTime end;
    // On the file's line.
    std::vector<MediaTime> expectedTimes;
    MediaTime expectedEnd;
};

class MovieWriterTakes : public testing::TestWithParam<TakeRow> {};

TEST_P(MovieWriterTakes, KeepsStampsAndLength) {
    const TakeRow& row = GetParam();
    const TemporaryFolder folder;
    const std::string path = folder / "take.mov";
    const auto recorded = recordTake(path, row.start, row.times, row.end);
    ASSERT_TRUE(recorded) << recorded.error().message;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"take.mov"});

    const auto asset = Asset::open(path);
    ASSERT_TRUE(asset) << asset.error().message;
    ASSERT_EQ((*asset)->tracks().size(), 1u);
    const AssetTrack track = (*asset)->tracks().front();
    EXPECT_EQ(track.kind, MediaKind::video);
    EXPECT_EQ(track.codecName, "h264");
    EXPECT_EQ(track.naturalSize, (Size{pictureWidth, pictureHeight}));
    EXPECT_EQ(track.timeRange.start, row.expectedTimes.front());
    EXPECT_EQ(track.timeRange.end(), row.expectedEnd);
    EXPECT_EQ((*asset)->duration(), row.expectedEnd);

    std::vector<ShownPicture> expected;
    for (std::size_t i = 0; i < row.expectedTimes.size(); ++i)
        expected.push_back({int(i), row.expectedTimes[i]});
    EXPECT_EQ(picturesIn(path), expected);
}

std::vector<MediaTime> evenly(int count, MediaTime start, MediaTime step) {
    std::vector<MediaTime> times;
    for (int i = 0; i < count; ++i)
        times.push_back(start + step * i);
    return times;
}

INSTANTIATE_TEST_SUITE_P(
    , MovieWriterTakes,
    testing::Values(
        TakeRow{"sixtyASecond", MediaTime(7, 1), evenly(150, MediaTime(7, 1), MediaTime(1, 60)), MediaTime(19, 2),
                evenly(150, MediaTime::zero(), MediaTime(1, 60)), MediaTime(5, 2)},
        TakeRow{"oneStillPicture",
                micro(1'000'123),
                {micro(1'000'123)},
                micro(9'000'123),
                {MediaTime::zero()},
                MediaTime(8, 1)},
        TakeRow{"longHolesAndClicks",
                MediaTime(0, 600),
                {MediaTime(0, 600), MediaTime(1, 600), MediaTime(2, 600), MediaTime(3000, 600), MediaTime(3001, 600)},
                MediaTime(10, 1),
                {MediaTime(0, 600), MediaTime(1, 600), MediaTime(2, 600), MediaTime(3000, 600), MediaTime(3001, 600)},
                MediaTime(10, 1)},
        TakeRow{"lateStart", MediaTime(100, 1), evenly(90, MediaTime(20007, 200), MediaTime(1, 30)), MediaTime(104, 1),
                evenly(90, MediaTime(7, 200), MediaTime(1, 30)), MediaTime(4, 1)},
        // Nearer together than the file's ticks: moved apart by one.
        TakeRow{"microsecondsApart",
                micro(5),
                {micro(5), micro(6), micro(7), micro(1005)},
                micro(1'000'005),
                {MediaTime(0, 60000), MediaTime(1, 60000), MediaTime(2, 60000), MediaTime(60, 60000)},
                MediaTime(1, 1)},
        TakeRow{"twentyFourASecond", MediaTime(3, 1), evenly(130, MediaTime(3, 1), MediaTime(1, 24)),
                MediaTime(3, 1) + MediaTime(130, 24), evenly(130, MediaTime::zero(), MediaTime(1, 24)),
                MediaTime(130, 24)}),
    [](const auto& row) { return row.param.name; });

/// What the ffprobe program says; one line a packet or stream.
std::string probe(const std::string& arguments) {
    std::FILE* pipe = ::popen(("ffprobe -v error -of csv=p=0 " + arguments).c_str(), "r");
    std::string text;
    std::array<char, 4096> part{};
    while (pipe != nullptr && std::fgets(part.data(), int(part.size()), pipe) != nullptr)
        text += part.data();
    EXPECT_EQ(::pclose(pipe), 0);
    return text;
}

TEST(MovieWriter, TellsOthersItsColoursAndPutsAKeyFrameIntoEverySecond) {
    const TemporaryFolder folder;
    std::vector<MediaTime> times = evenly(100, MediaTime::zero(), MediaTime(1, 30));
    times.push_back(MediaTime(9, 2));
    times.push_back(MediaTime(23, 5));
    ASSERT_TRUE(recordTake(folder / "take.mov", MediaTime::zero(), times, MediaTime(6, 1)));
    const std::string file = "'" + (folder / "take.mov") + "'";
    EXPECT_EQ(probe("-show_entries stream=codec_name,color_range,color_space,color_transfer,color_primaries " + file),
              "h264,tv,bt709,bt709,bt709\n");
    // The same from the container alone: H.264's own words begin with its packets.
    const std::vector<char> bytes = bytesOf(folder / "take.mov");
    const std::string colr = {'c', 'o', 'l', 'r', 'n', 'c', 'l', 'c', 0, 1, 0, 1, 0, 1};
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), colr.begin(), colr.end()), bytes.end());

    std::istringstream packets(probe("-show_entries packet=pts_time,flags " + file));
    double lastKey = -10;
    int keys = 0;
    for (std::string line; std::getline(packets, line);) {
        const double time = std::stod(line);
        const bool isKey = line.find(",K") != std::string::npos;
        EXPECT_TRUE(isKey || time - lastKey < 1) << line;
        if (isKey) {
            lastKey = time;
            keys += 1;
        }
    }
    EXPECT_EQ(keys, 5) << "at 0, 1, 2, 3 and 4.5 seconds";
}

/// Small print, scrolled by that many pixels, with a mark on it that tells pages apart.
PixelBuffer printedPage(int scrolled, int mark) {
    constexpr int width = 640;
    constexpr int height = 360;
    PixelBuffer page = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto stroke = std::uint32_t((y + scrolled) / 4 * 331 + x / 2) * 2654435761U;
            const bool isMark = y < 8 && x < 8 * mark;
            const bool isBlack = isMark || ((y + scrolled) % 16 < 12 && (stroke >> 28U) < 5);
            std::memset(page.mutableRow(0, y) + 4 * x, isBlack ? 0 : 255, 4);
        }
    return page;
}

/// The mean difference of two pictures' green.
double difference(const PixelBuffer& a, const PixelBuffer& b) {
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            sum += std::abs(int(a.row(0, y)[4 * x + 1]) - int(b.row(0, y)[4 * x + 1]));
    return sum / (double(a.width()) * a.height());
}

TEST(MovieWriter, GivesAStillScreenItsBitsAndAFloodNoMore) {
    const TemporaryFolder folder;
    const std::string path = folder / "take.mov";
    const VideoTrackSettings settings{640, 360, 1'200'000, 60, 120};
    constexpr int pages = 15;
    {
        Recording take(path, settings);
        for (int i = 0; i < pages; ++i)
            ASSERT_TRUE(appendWhenReady(take.writer, *take.input, printedPage(0, i), MediaTime(i, 1)));
        ASSERT_TRUE(appendWhenReady(take.writer, *take.input, printedPage(0, 0), MediaTime(pages, 1)));
        for (int i = 1; i < 240; ++i)
            ASSERT_TRUE(
                appendWhenReady(take.writer, *take.input, printedPage(7 * i, 0), MediaTime(60 * pages + i, 60)));
        take.input->markAsFinished();
        ASSERT_TRUE(finishAndWait(take.writer, take.answer, MediaTime(pages + 4, 1)));
    }
    const auto asset = Asset::open(path);
    ASSERT_TRUE(asset);
    const auto reader = TrackReader::open(*asset, 0, {});
    ASSERT_TRUE(reader);
    for (int i = 0; i < pages; ++i) {
        const auto frame = (*reader)->next();
        ASSERT_TRUE(frame && *frame);
        EXPECT_LT(difference((**frame).pixels, printedPage(0, i)), 3) << "page " << i;
    }
    double bitsOfFlood = 0;
    std::istringstream packets(probe("-show_entries packet=pts_time,size '" + path + "'"));
    for (std::string line; std::getline(packets, line);)
        if (std::stod(line) > pages)
            bitsOfFlood += 8 * std::stod(line.substr(line.find(',') + 1));
    EXPECT_LT(bitsOfFlood, 1.2 * (4 + 2) * double(settings.averageBitRate)) << "four seconds and what may be saved up";
}

TEST(MovieWriter, OpensOnlyANameThatIsFree) {
    const TemporaryFolder folder;
    writeBytes(folder / "taken.mov", {'m', 'i', 'n', 'e'});
    const std::vector<std::pair<std::string, std::string>> rows{
        {folder / "taken.mov", "taken.mov: File exists"},
        {folder / "gone/take.mov", "take.mov: No such file or directory"},
    };
    SerialQueue answer("test.answer");
    for (const auto& [path, words] : rows) {
        FileMovieWriter writer(path);
        ASSERT_TRUE(writer.addVideoInput(smallTrack()));
        const auto started = writer.startWriting();
        ASSERT_FALSE(started) << path;
        EXPECT_EQ(started.error().message, words);
        EXPECT_EQ(giveUpAndWait(writer, answer, folder / "kept"), "");
    }
    EXPECT_EQ(bytesOf(folder / "taken.mov"), (std::vector<char>{'m', 'i', 'n', 'e'}));
}

TEST(MovieWriter, LeavesNoFileWhenTheEncoderRefuses) {
    const TemporaryFolder folder;
    ::setenv("KELDRA_X264_PRESET", "nosuchpreset", 1);
    FileMovieWriter writer(folder / "take.mov");
    ASSERT_TRUE(writer.addVideoInput(smallTrack()));
    const auto started = writer.startWriting();
    ::unsetenv("KELDRA_X264_PRESET");
    ASSERT_FALSE(started);
    EXPECT_EQ(writer.error(), started.error());
    EXPECT_TRUE(folder.names().empty());
}

TEST(MovieWriter, TakesOnlyPicturesThatFitInRisingOrderWithinTheSession) {
    const TemporaryFolder folder;
    SerialQueue answer("test.answer");
    FileMovieWriter writer(folder / "take.mov");
    auto added = writer.addVideoInput(smallTrack());
    ASSERT_TRUE(added);
    MovieWriterVideoInput& input = *added;
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime(5, 1))) << "before writing";
    ASSERT_TRUE(writer.startWriting());
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime(5, 1))) << "before the session";
    writer.startSession(MediaTime(5, 1));
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime(4, 1))) << "before its start";
    EXPECT_TRUE(appendWhenReady(writer, input, paintedPicture(0), MediaTime(6, 1)));
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime(6, 1))) << "again";
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime(11, 2))) << "back";
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime::invalid()));
    EXPECT_FALSE(input.append(paintedPicture(9, 64, 64), MediaTime(7, 1))) << "another size";
    EXPECT_TRUE(appendWhenReady(writer, input, paintedPicture(1), MediaTime(8, 1)));
    input.markAsFinished();
    EXPECT_FALSE(input.append(paintedPicture(9), MediaTime(9, 1))) << "after the end";
    ASSERT_TRUE(finishAndWait(writer, answer, MediaTime(9, 1)));
    EXPECT_EQ(picturesIn(folder / "take.mov"), (std::vector<ShownPicture>{{0, MediaTime(1, 1)}, {1, MediaTime(3, 1)}}));
}

TEST(MovieWriter, HoldsTheSenderBackAndLosesNothingItTook) {
    const TemporaryFolder folder;
    VideoTrackSettings settings = smallTrack();
    settings.width = 1280;
    settings.height = 720;
    Recording recording(folder / "take.mov", settings);
    std::mt19937 random(3);
    PixelBuffer noise = paintedPicture(0, 1280, 720);
    for (int y = 2 * blockSize; y < noise.height(); ++y)
        std::generate_n(noise.mutableRow(0, y), noise.width() * 4, [&] { return std::uint8_t(random()); });
    // Sent as fast as it goes, the encoder falls behind at once.
    int taken = 0;
    int refused = 0;
    for (int i = 0; refused < 20 && i < 100'000; ++i) {
        if (recording.input->append(noise, MediaTime(i + 1, 60000)))
            taken += 1;
        else
            refused += 1;
    }
    EXPECT_EQ(refused, 20);
    EXPECT_FALSE(recording.writer.error());
    EXPECT_TRUE(appendWhenReady(recording.writer, *recording.input, noise, MediaTime(2, 1)));
    ASSERT_TRUE(finishAndWait(recording.writer, recording.answer, MediaTime(3, 1)));
    EXPECT_EQ(picturesIn(folder / "take.mov").size(), std::size_t(taken + 1));
}

TEST(MovieWriter, LocksItsFile) {
    const TemporaryFolder folder;
    {
        Recording recording(folder / "take.mov");
        ASSERT_TRUE(recording.append(0, MediaTime::zero()));
        const int descriptor = ::open((folder / "take.mov").c_str(), O_RDONLY);
        EXPECT_EQ(::flock(descriptor, LOCK_SH | LOCK_NB), -1);
        EXPECT_EQ(errno, EWOULDBLOCK);
        ::close(descriptor);
    }
    const int descriptor = ::open((folder / "take.mov").c_str(), O_RDONLY);
    EXPECT_EQ(::flock(descriptor, LOCK_SH | LOCK_NB), 0);
    ::close(descriptor);
}

TEST(MovieWriter, KeepsWhatItHasWhenItIsDropped) {
    const TemporaryFolder folder;
    {
        Recording recording(folder / "take.mov");
        for (int i = 0; i < 10; ++i)
            ASSERT_TRUE(recording.append(i, MediaTime(i, 30)));
    }
    EXPECT_EQ(numbersIn(folder / "take.mov"), upTo(10));
}

TEST(MovieWriter, FailsWithoutAPicture) {
    const TemporaryFolder folder;
    Recording recording(folder / "take.mov");
    const auto finished = finishAndWait(recording.writer, recording.answer, MediaTime(1, 1));
    ASSERT_FALSE(finished);
    EXPECT_EQ(finished.error().message, "Not one picture was recorded.");
    EXPECT_TRUE(folder.names().empty());
}

} // namespace
} // namespace keldra
