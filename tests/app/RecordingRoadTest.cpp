#include "app/AppWorld.h"
#include "doubles/ScriptedMovieWriter.h"
#include "doubles/ScriptedScreenStream.h"
#include "recording/ScreenRecorderError.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using enum RecordingState;
using test::AppWorld;
namespace keys = preferenceKeys;

/// The model over the real recorder, whose screen and file are scripted.
class RecordingRoad : public AppWorld {
protected:
    RecordingRoad() {
        output = folder.filePath("output");
        QDir().mkpath(output);
        preferences.setValue(keys::outputDirectoryPath, output);
        content->answer = ShareableContentSnapshot{{{1, QRectF(0, 0, 1920, 1080)}}, {}};
    }
    ~RecordingRoad() override { model.reset(); }

    RecordingEngine& engine() override { return screenEngine; }

    Platform recorderPlatform() {
        Platform platform;
        platform.clock = time.clock();
        platform.screens = screens;
        platform.shareableContent = content;
        platform.makeScreenStream = [this] { return std::make_unique<ScriptedScreenStream>(stream, time.mainQueue()); };
        return platform;
    }
    void deliverFrame() {
        stream->deliver({PixelBuffer::allocate(PixelFormat::bgra, 1920, 1080), time.clock()->now()});
        time.settle();
    }

    QString output;
    std::shared_ptr<FixedShareableContent> content = std::make_shared<FixedShareableContent>(time.mainQueue());
    std::shared_ptr<ScreenStreamScript> stream = std::make_shared<ScreenStreamScript>();
    std::shared_ptr<MovieWriterScript> writer = std::make_shared<MovieWriterScript>();
    ScreenRecorder screenRecorder{recorderPlatform(),
                                  [this](const std::string& path) -> Result<std::unique_ptr<MovieWriter>> {
                                      writer->path = path;
                                      return std::make_unique<ScriptedMovieWriter>(writer);
                                  },
                                  time.queue("capture"), time.mainQueue()};
    ScreenRecordingEngine screenEngine{screenRecorder};
};

TEST_F(RecordingRoad, LeadsToAFileInTheFolder) {
    makeRecording();
    deliverFrame();
    time.advance(3s);
    press();
    EXPECT_EQ(states, (QList<RecordingState>{countdown, recording, stopping, idle}));
    EXPECT_EQ(model->lastSavedURL().toLocalFile().toStdString(), writer->path);
    EXPECT_TRUE(writer->path.starts_with(output.toStdString() + "/KELDRA-2024-"));
    EXPECT_FALSE(model->lastRecordingHasLiveClickTrack());
    EXPECT_EQ(model->elapsedSeconds(), 3);
}

TEST_F(RecordingRoad, OfADiskNearlyFullEndsWhereAStopEndsAndSaysSo) {
    makeRecording();
    deliverFrame();
    time.advance(3s);
    writer->tell(MovieWriterTrouble::diskNearlyFull);
    time.settle();
    EXPECT_EQ(states, (QList<RecordingState>{countdown, recording, idle}));
    EXPECT_EQ(model->lastSavedURL().toLocalFile().toStdString(), writer->path);
    EXPECT_EQ(model->currentSelection(), std::nullopt);
    EXPECT_TRUE(model->errorMessage().isEmpty());
    ASSERT_TRUE(model->notice());
    EXPECT_EQ(model->notice()->message, "The disk is nearly full, so the recording was ended. It is saved.");
    EXPECT_EQ(model->notice()->action, AppNotice::Action(AppNotice::RevealFile{model->lastSavedURL()}));
    time.advance(2s);
    EXPECT_EQ(model->elapsedSeconds(), 3);
}

TEST_F(RecordingRoad, AFolderThatVanishesIsToldAndUsedAgainWhenItIsBack) {
    const std::string gone = systemError(ENOENT, writer->path).message;
    makeRecording();
    deliverFrame();
    QDir(output).removeRecursively();
    writer->error = systemError(ENOENT);
    time.advance(1s);
    deliverFrame();
    EXPECT_EQ(model->recordingState(), failed) << "at once, not at the stop";
    EXPECT_EQ(model->errorMessage().toStdString(), gone);
    EXPECT_EQ(model->currentSelection(), wholeDisplay);

    writer->error.reset();
    press();
    EXPECT_EQ(model->recordingState(), failed);
    EXPECT_EQ(model->errorMessage(), "The output folder is unavailable or not writable.");
    EXPECT_EQ(preferences.value(keys::outputDirectoryPath), output) << "nobody forgets the choice";
    EXPECT_EQ(notices.size(), 2);

    stream->stops = 0;
    QDir().mkpath(output);
    press();
    deliverFrame();
    press();
    EXPECT_EQ(model->recordingState(), idle);
    EXPECT_EQ(model->lastSavedURL().toLocalFile().toStdString(), writer->path);
}

} // namespace
} // namespace keldra
