#include "TestMovies.h"
#include "base/HostClock.h"

#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace keldra {
namespace {

using namespace test;

/// A process of its own that records until it is killed, and says of each picture that it was appended.
class Recorder {
public:
    explicit Recorder(std::string path, bool isStill) : m_path(std::move(path)) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        m_reports = ends[0];
        m_process = ::fork();
        if (m_process == 0)
            record(ends[1], isStill);
        ::close(ends[1]);
    }
    ~Recorder() {
        if (m_process > 0)
            kill();
        ::close(m_reports);
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    const std::string& path() const { return m_path; }
    const std::vector<ShownPicture>& appended() const { return m_appended; }

    /// Reads one more report; false when the process has ended.
    bool hear() {
        Report report{};
        if (::read(m_reports, &report, sizeof report) != sizeof report)
            return false;
        m_appended.push_back({report.number, MediaTime(report.microseconds, 1'000'000)});
        return true;
    }

    void kill() {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        m_process = 0;
        while (hear())
            continue;
    }

private:
    struct Report {
        int number;
        std::int64_t microseconds;
    };

    [[noreturn]] void record(int reports, bool isStill) {
        FileMovieWriter writer(m_path);
        auto added = writer.addVideoInput(smallTrack());
        if (!added || !writer.startWriting())
            ::_exit(1);
        MovieWriterVideoInput& input = *added;
        const SystemHostClock clock;
        const MediaTime start = clock.now();
        writer.startSession(start);
        int number = 0;
        SerialQueue capture("test.capture");
        const auto append = [&] {
            const MediaTime now = clock.now();
            if (!input.append(paintedPicture(number), now))
                return;
            const Report report{number, (now - start).converted(1'000'000).value()};
            if (::write(reports, &report, sizeof report) != sizeof report)
                ::_exit(1);
            number += 1;
        };
        capture.sync(append);
        Timer timer = isStill ? Timer() : capture.every(std::chrono::milliseconds(16), append);
        for (;;)
            ::pause();
    }

    std::string m_path;
    pid_t m_process = 0;
    int m_reports = 0;
    std::vector<ShownPicture> m_appended;
};

TEST(KilledTake, HoldsEveryPictureOlderThanTwoSeconds) {
    const TemporaryFolder folder;
    // Side by side, and killed at different moments of a fragment.
    std::vector<std::unique_ptr<Recorder>> recorders;
    for (const char* name : {"first.mov", "second.mov", "third.mov"})
        recorders.push_back(std::make_unique<Recorder>(folder / name, false));
    MediaTime killAt(25, 10);
    for (const auto& recorder : recorders) {
        SCOPED_TRACE(recorder->path());
        do
            ASSERT_TRUE(recorder->hear());
        while (recorder->appended().back().time < killAt);
        recorder->kill();
        killAt = killAt + MediaTime(4, 10);

        const std::vector<ShownPicture>& appended = recorder->appended();
        const std::vector<ShownPicture> kept = picturesIn(recorder->path());
        ASSERT_FALSE(kept.empty());
        ASSERT_LE(kept.size(), appended.size());
        for (std::size_t i = 0; i < kept.size(); ++i) {
            EXPECT_EQ(kept[i].number, appended[i].number);
            EXPECT_NEAR(kept[i].time.seconds(), appended[i].time.seconds(), 1.0 / 60000);
        }
        const MediaTime owed = appended.back().time - MediaTime(2, 1);
        EXPECT_TRUE(kept.size() == appended.size() || appended[kept.size()].time > owed)
            << "kept " << kept.size() << " of " << appended.size();
    }
}

TEST(KilledTake, HoldsAStillPictureThoughNoOtherFollows) {
    const TemporaryFolder folder;
    Recorder recorder(folder / "still.mov", true);
    ASSERT_TRUE(recorder.hear());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!Asset::open(recorder.path()) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    recorder.kill();
    const std::vector<ShownPicture> kept = picturesIn(recorder.path());
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept.front().number, 0);
}

} // namespace
} // namespace keldra
