#include "DiskHooks.h"
#include "TestMovies.h"
#include "TestSound.h"
#include "media/DiskSpace.h"

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <sys/resource.h>
#include <sys/stat.h>

namespace keldra {
namespace {

using namespace test;

const AudioFormat voice{SampleKind::int24, 48000, 2};

/// Something that other threads make true, waited for with a deadline.
class Watched {
public:
    template <typename Change>
    void change(Change change) {
        const std::lock_guard guard(m_lock);
        change();
        m_changed.notify_all();
    }
    template <typename Condition>
    bool wait(Condition condition) {
        std::unique_lock guard(m_lock);
        return m_changed.wait_for(guard, std::chrono::seconds(30), condition);
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
};

/// A writer under way from time 0, with sound, that notes what it is told.
struct WatchedRecording {
    explicit WatchedRecording(const std::string& path) : writer(path) {
        writer.setOnTrouble(
            answer, [this](MovieWriterTrouble trouble) { watched.change([&] { troubles.push_back(trouble); }); });
        pictures = &writer.addVideoInput(smallTrack())->get();
        sound = &writer.addAudioInput(voice)->get();
        const auto started = writer.startWriting();
        EXPECT_TRUE(started) << (started ? "" : started.error().message);
        writer.startSession(MediaTime::zero());
    }

    bool append(int number, MediaTime time) { return appendWhenReady(writer, *pictures, paintedPicture(number), time); }
    bool appendSound(std::int64_t firstFrame, std::int64_t count) {
        return sound->append(AudioBuffer::allocate(voice, count, MediaTime(firstFrame, voice.sampleRate)));
    }
    bool hears(MovieWriterTrouble trouble) {
        return watched.wait([&] { return std::find(troubles.begin(), troubles.end(), trouble) != troubles.end(); });
    }

    Watched watched;
    std::vector<MovieWriterTrouble> troubles;
    SerialQueue answer{"test.answer"};
    FileMovieWriter writer;
    MovieWriterVideoInput* pictures = nullptr;
    MovieWriterAudioInput* sound = nullptr;
};

TEST(TakeSafety, SoundAloneReachesTheDisk) {
    const TemporaryFolder folder;
    Watched disk;
    int syncs = 0;
    const DiskHooks hooks([&] {
        disk.change([&] { ++syncs; });
        return 0;
    });
    WatchedRecording recording(folder / "take.mov");
    ASSERT_TRUE(recording.append(0, MediaTime::zero()));
    for (int round = 1; round <= 4; ++round) {
        ASSERT_TRUE(disk.wait([&] { return syncs >= round; })) << "what came before round " << round;
        ASSERT_TRUE(recording.appendSound((round - 1) * 480, 480));
    }
    EXPECT_TRUE(finishAndWait(recording.writer, recording.answer, MediaTime(1, 1)));
}

TEST(TakeSafety, ADiskThatHangsCostsNoPicture) {
    const TemporaryFolder folder;
    Watched disk;
    int begun = 0;
    bool hangs = true;
    const DiskHooks hooks([&] {
        disk.change([&] { ++begun; });
        disk.wait([&] { return !hangs; });
        return 0;
    });
    WatchedRecording recording(folder / "take.mov");
    ASSERT_TRUE(recording.append(0, MediaTime::zero()));
    ASSERT_TRUE(disk.wait([&] { return begun == 1; }));
    // Five seconds of stamps: as many fragments are closed meanwhile.
    for (int i = 1; i < 300; ++i) {
        ASSERT_TRUE(recording.append(i, MediaTime(i, 60)));
        ASSERT_TRUE(recording.appendSound((i - 1) * 800, 800));
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (numbersIn(folder / "take.mov").size() < 240 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_GE(numbersIn(folder / "take.mov").size(), 240u) << "the file grows on";
    disk.change([&] {
        EXPECT_EQ(begun, 1) << "one is under way, the others wait as one";
        hangs = false;
    });
    EXPECT_TRUE(disk.wait([&] { return begun == 2; }));
    ASSERT_TRUE(finishAndWait(recording.writer, recording.answer, MediaTime(5, 1)));
    EXPECT_EQ(numbersIn(folder / "take.mov"), upTo(300));
    EXPECT_EQ(readWhole(folder / "take.mov").frameCount(), 299 * 800);
    EXPECT_TRUE(recording.troubles.empty());
}

TEST(TakeSafety, WhatTheDiskRefusesToKeepIsAnError) {
    for (const int refusal : {EIO, ENOSPC}) {
        const TemporaryFolder folder;
        std::atomic<int> syncs = 0;
        const DiskHooks hooks([&] { return ++syncs == 2 ? refusal : 0; });
        WatchedRecording recording(folder / "take.mov");
        ASSERT_TRUE(recording.append(0, MediaTime::zero()));
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (syncs < 1 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        ASSERT_TRUE(recording.append(1, MediaTime(1, 2)));
        ASSERT_TRUE(recording.hears(MovieWriterTrouble::failed));
        EXPECT_EQ(recording.writer.error()->message, systemError(refusal, "take.mov").message);
        EXPECT_FALSE(recording.pictures->isReadyForMoreMediaData());
        EXPECT_EQ(giveUpAndWait(recording.writer, recording.answer, folder / "kept"), folder / "kept/take.mov");
        EXPECT_EQ(numbersIn(folder / "kept/take.mov"), upTo(2));
    }
}

TEST(TakeSafety, TheLastWordOfTheDiskCounts) {
    const TemporaryFolder folder;
    Watched disk;
    int begun = 0;
    bool hangs = true;
    const DiskHooks hooks([&] {
        disk.change([&] { ++begun; });
        disk.wait([&] { return !hangs; });
        return EIO;
    });
    WatchedRecording recording(folder / "take.mov");
    ASSERT_TRUE(recording.append(0, MediaTime::zero()));
    ASSERT_TRUE(disk.wait([&] { return begun == 1; }));
    std::promise<Result<void>> answer;
    recording.writer.finishWriting(MediaTime(1, 1), recording.answer,
                                   [&](Result<void> result) { answer.set_value(std::move(result)); });
    disk.change([&] { hangs = false; });
    const Result<void> finished = answer.get_future().get();
    ASSERT_FALSE(finished) << "an ordinary movie made of what the disk lost would be no better";
    EXPECT_EQ(finished.error().message, "take.mov: Input/output error");
    EXPECT_EQ(giveUpAndWait(recording.writer, recording.answer, folder / "kept"), folder / "kept/take.mov");
}

struct RoomRow {
    const char* name;
    std::int64_t freeBytes;
    bool isTold;
    bool becomesOrdinary;
};

class TakeSafetyRoom : public testing::TestWithParam<RoomRow> {};

TEST_P(TakeSafetyRoom, IsLookedAtWhileItLasts) {
    const TemporaryFolder folder;
    const RoomRow& row = GetParam();
    std::atomic<int> looks = 0;
    const DiskHooks hooks({}, [&] {
        ++looks;
        return row.freeBytes;
    });
    WatchedRecording recording(folder / "take.mov");
    ASSERT_TRUE(recording.append(0, MediaTime::zero()));
    ASSERT_TRUE(recording.appendSound(0, 48000));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    // A still screen: nothing comes any more.
    while (looks < 3 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_GE(looks, 3);
    testing::internal::CaptureStdout();
    const auto finished = finishAndWait(recording.writer, recording.answer, MediaTime(2, 1));
    const std::string log = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(finished);
    EXPECT_EQ(log.find("take.mov: No space left on device") != std::string::npos, !row.becomesOrdinary) << log;
    const std::vector<MovieWriterTrouble> told(row.isTold ? 1 : 0, MovieWriterTrouble::diskNearlyFull);
    recording.answer.sync([&] { EXPECT_EQ(recording.troubles, told) << "once"; });
    EXPECT_FALSE(recording.writer.error());
    EXPECT_EQ(folder.names(), std::vector<std::string>{"take.mov"});
    EXPECT_EQ(numbersIn(folder / "take.mov"), upTo(1));
    const auto bytes = bytesOf(folder / "take.mov");
    const std::string fragment = "moof";
    EXPECT_EQ(std::search(bytes.begin(), bytes.end(), fragment.begin(), fragment.end()) == bytes.end(),
              row.becomesOrdinary);
}

INSTANTIATE_TEST_SUITE_P(, TakeSafetyRoom,
                         testing::Values(RoomRow{"plenty", diskSpace::neededToStart, false, true},
                                         RoomRow{"justEnough", diskSpace::keptWhileRecording, false, true},
                                         RoomRow{"nearlyFull", diskSpace::keptWhileRecording - 1, true, true},
                                         RoomRow{"noRoomForTwo", diskSpace::keptWhileFinishing, true, false},
                                         RoomRow{"full", 0, true, false}),
                         [](const auto& row) { return row.param.name; });

struct LossRow {
    const char* name;
    std::function<void(const TemporaryFolder&)> happens;
    /// Where it is then, below the folder; empty when it is gone.
    std::string keptAt;
};

class TakeSafetyLoss : public testing::TestWithParam<LossRow> {};

TEST_P(TakeSafetyLoss, IsToldThoughNothingMoves) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "takes");
    WatchedRecording recording(folder / "takes/take.mov");
    ASSERT_TRUE(recording.append(0, MediaTime::zero()));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!Asset::open(folder / "takes/take.mov") && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    GetParam().happens(folder);
    ASSERT_TRUE(recording.hears(MovieWriterTrouble::failed));
    EXPECT_EQ(recording.writer.error()->message,
              "take.mov: the file was removed or moved, or its folder, while it was recorded");
    const std::string& expected = GetParam().keptAt;
    EXPECT_EQ(giveUpAndWait(recording.writer, recording.answer, folder / "kept"),
              expected.empty() ? "" : folder / expected);
    EXPECT_FALSE(std::filesystem::exists(folder / "kept"));
    if (!expected.empty()) {
        EXPECT_EQ(numbersIn(folder / expected), upTo(1));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , TakeSafetyLoss,
    testing::Values(
        LossRow{"removed", [](const auto& folder) { std::filesystem::remove(folder / "takes/take.mov"); }, ""},
        LossRow{"folderRemoved", [](const auto& folder) { std::filesystem::remove_all(folder / "takes"); }, ""},
        LossRow{"folderRenamed",
                [](const auto& folder) { std::filesystem::rename(folder / "takes", folder / "other"); },
                "other/take.mov"},
        LossRow{"another'sInItsPlace",
                [](const auto& folder) {
                    std::filesystem::rename(folder / "takes/take.mov", folder / "mine.mov");
                    writeBytes(folder / "takes/take.mov", {'o', 't', 'h', 'e', 'r'});
                },
                "mine.mov"}),
    [](const auto& row) {
        std::string name = row.param.name;
        std::erase(name, '\'');
        return name;
    });

struct RecoveryRow {
    const char* name;
    /// Prepares it; answers the recovery folder.
    std::function<std::string(const TemporaryFolder&)> folder;
    /// Below the test's folder.
    std::string keptAt;
};

class TakeSafetyRecovery : public testing::TestWithParam<RecoveryRow> {};

TEST_P(TakeSafetyRecovery, KeepsWhatAFailedRecordingHas) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "takes");
    const std::string recovery = GetParam().folder(folder);
    Recording recording(folder / "takes/take.mov");
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(recording.append(i, MediaTime(i, 2)));
    const std::string keptAt = giveUpAndWait(recording.writer, recording.answer, recovery);
    EXPECT_EQ(keptAt, folder / GetParam().keptAt);
    EXPECT_FALSE(recording.input->isReadyForMoreMediaData());
    EXPECT_FALSE(std::filesystem::exists(folder / "takes/take.mov"));
    EXPECT_EQ(numbersIn(keptAt), upTo(3)) << "those too whose fragment was open";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
        if (entry.is_regular_file() && entry.path() != keptAt) {
            EXPECT_EQ(bytesOf(entry.path()), (std::vector<char>{'o', 'l', 'd'})) << entry.path();
        }
}

INSTANTIATE_TEST_SUITE_P(
    , TakeSafetyRecovery,
    testing::Values(RecoveryRow{"aNewFolder",
                                [](const auto& folder) { return folder / "data/KELDRA/RecordingRecovery"; },
                                "data/KELDRA/RecordingRecovery/take.mov"},
                    RecoveryRow{"takenNames",
                                [](const auto& folder) {
                                    std::filesystem::create_directory(folder / "kept");
                                    writeBytes(folder / "kept/take.mov", {'o', 'l', 'd'});
                                    writeBytes(folder / "kept/take-2.mov", {'o', 'l', 'd'});
                                    return folder / "kept";
                                },
                                "kept/take-3.mov"},
                    RecoveryRow{"noFolderCanBeMade",
                                [](const auto& folder) {
                                    writeBytes(folder / "kept", {'o', 'l', 'd'});
                                    writeBytes(folder / "takes/.recovered-take.mov", {'o', 'l', 'd'});
                                    return folder / "kept";
                                },
                                "takes/.recovered-take-2.mov"}),
    [](const auto& row) { return row.param.name; });

/// No file may grow beyond this while it lives: a full disk, as far as a program can tell.
class DiskLimit {
public:
    explicit DiskLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~DiskLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

TEST(TakeSafety, WhatFitsOnAFullDiskIsKept) {
    const TemporaryFolder folder;
    Recording recording(folder / "take.mov");
    {
        const DiskLimit full(20'000);
        int appended = 0;
        while (appended < 20'000 && recording.append(appended, MediaTime(appended, 60)))
            appended += 1;
        const auto error = recording.writer.error();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->message, "take.mov: File too large");
        const auto finished = finishAndWait(recording.writer, recording.answer, MediaTime(appended, 60));
        ASSERT_FALSE(finished);
        EXPECT_EQ(finished.error(), *error);
        EXPECT_EQ(giveUpAndWait(recording.writer, recording.answer, folder / "kept"), folder / "kept/take.mov");
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"kept"});
    const std::vector<int> numbers = numbersIn(folder / "kept/take.mov");
    EXPECT_GE(numbers.size(), 60u);
    EXPECT_EQ(numbers, upTo(int(numbers.size())));
}

} // namespace
} // namespace keldra
