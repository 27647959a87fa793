// An export's memory is there after its first frames: from then on only libav asks for more.

#include "AllocationCounter.h"
#include "composition/EditorCompositionBuilder.h"
#include "composition/Tasks.h"
#include "media/ExportSession.h"
#include "media/FrameCompositor.h"
#include "media/TestMovies.h"
#include "project/FreshProject.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace test;
using test::finish;
using test::SteppedClock;

/// Hands requests on, and notes the count at some of them.
class CountingCompositor final : public FrameCompositor {
public:
    CountingCompositor(std::unique_ptr<FrameCompositor> compositor, std::vector<std::int64_t>& counts)
        : m_compositor(std::move(compositor)), m_counts(counts) {}

    void startRequest(std::shared_ptr<FrameRequest> request) override {
        m_counts.push_back(allocationCount());
        m_compositor->startRequest(std::move(request));
    }

private:
    std::unique_ptr<FrameCompositor> m_compositor;
    std::vector<std::int64_t>& m_counts;
};

/// A fresh look with a zoom at the start and one in the middle.
Result<EditorCompositionOutput> build(const std::string& path, double seconds) {
    const SourceFacts facts{seconds, SourceFacts::Video{60, QSizeF(640, 360), QTransform()}};
    EditorProject project =
        makeFreshProject(QUrl::fromLocalFile(QString::fromStdString(path)), false, facts, QDateTime());
    // Whatever the second zoom needs was needed by the first.
    ZoomBlock zoom;
    zoom.duration = 0.8;
    project.zoomBlocks = QList<ZoomBlock>{zoom, zoom};
    project.zoomBlocks->last().timelineStart = seconds / 2;

    PumpedExecutor main;
    const AssetLoader open = [&main](const std::string& name, Completion<AssetPtr> done) {
        main.post([name, done] { done(Asset::open(name)); });
    };
    const EditorCompositionBuilder builder(open, MainTurn(main, std::make_shared<SteppedClock>()));
    return finish(builder.build(project), main);
}

TEST(ExportAllocations, NoneAfterTheFirstFrames) {
    constexpr int frameCount = 360;
    const TemporaryFolder folder;
    const std::string source = folder.path() + "/source.mov";
    runFfmpeg(paintedSource(60, frameCount / 60.0, "640x360") +
              "-f lavfi -i sine=440:r=48000 -f lavfi -i sine=600:r=48000 -map 0 -map 1 -map 2 -shortest -c:v libx264 "
              "-pix_fmt yuv420p -g 60 -c:a pcm_s16le " +
              source);
    const auto output = build(source, frameCount / 60.0);
    ASSERT_TRUE(output) << output.error().message;
    std::vector<std::int64_t> counts;
    counts.reserve(frameCount);
    VideoComposition video = output->videoComposition.value();
    video.makeCompositor = [&counts, make = video.makeCompositor] {
        return std::make_unique<CountingCompositor>(make(), counts);
    };

    ExportSession session(output->composition, video, output->audioMix);
    SerialQueue answers("Answers");
    std::promise<Result<void>> ended;
    session.start(folder.path() + "/out.mp4", answers, [&](Result<void> result) { ended.set_value(result); });
    const Result<void> result = ended.get_future().get();
    ASSERT_TRUE(result) << result.error().message;
    ASSERT_EQ(counts.size(), frameCount);
    // The pools of pictures and of small pieces may still fill up.
    EXPECT_LT(counts[frameCount - 1] - counts[60], 30);
}

} // namespace
} // namespace keldra
