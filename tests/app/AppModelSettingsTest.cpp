#include "app/AppWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::AppWorld;
namespace keys = preferenceKeys;

class AppModelSettings : public AppWorld {};

TEST_F(AppModelSettings, AreStoredAndLoadedByTheNext) {
    makeModel();
    model->setShowClickIndicators(false);
    model->setClickSoundEnabled(true);
    model->setClickSoundStyle(ClickSoundStyle::classic);
    model->setAnalyticsEnabled(true);
    model->setCountdownDuration(CountdownDuration::three);
    model->setShowCursorHighlight(true);
    model->setRecordingQuality(RecordingQuality::low);
    model->toggleCameraOverlaySize();
    model->toggleCameraOverlayShape();
    preferences.setValue(keys::clickIndicatorIntensity, 9);
    preferences.setValue(keys::cursorHighlightIntensity, 0.05);
    preferences.setValue(keys::cursorHighlightSize, 200);
    const std::pair<const char*, const char*> texts[] = {
        {"preferences.showClickIndicators", "false"},
        {"preferences.clickSoundEnabled", "true"},
        {"preferences.clickSoundStyle", "classic"},
        {"analyticsEnabled", "true"},
        {"preferences.countdownSeconds", "3"},
        {"preferences.showCursorHighlight", "true"},
        {"preferences.recordingQuality", "low"},
        {"preferences.cameraOverlaySize", "small"},
        {"preferences.cameraOverlayShape", "roundedSquare"},
    };
    for (const auto& [key, text] : texts)
        EXPECT_EQ(stored(key), text) << key;

    makeModel();
    EXPECT_FALSE(model->showClickIndicators());
    EXPECT_TRUE(model->clickSoundEnabled());
    EXPECT_EQ(model->clickSoundStyle(), ClickSoundStyle::classic);
    EXPECT_TRUE(model->analyticsEnabled());
    EXPECT_EQ(model->countdownDuration(), CountdownDuration::three);
    EXPECT_TRUE(model->showCursorHighlight());
    EXPECT_EQ(model->recordingQuality(), RecordingQuality::low);
    EXPECT_EQ(model->cameraOverlaySize(), CameraOverlaySize::small);
    EXPECT_EQ(model->cameraOverlayShape(), CameraOverlayShape::roundedSquare);
    EXPECT_EQ(model->clickIndicatorIntensity(), 2);
    EXPECT_EQ(model->cursorHighlightIntensity(), 0.05) << "as stored";
    EXPECT_EQ(model->cursorHighlightSize(), 200) << "as stored";
    EXPECT_EQ(pointerMonitor->snapshot().cursorHighlightIntensity, 0.2) << "within bounds";
    EXPECT_EQ(pointerMonitor->snapshot().cursorHighlightSize, 80);
    model->toggleCameraOverlaySize();
    model->toggleCameraOverlayShape();
    EXPECT_EQ(model->cameraOverlaySize(), CameraOverlaySize::large);
    EXPECT_EQ(model->cameraOverlayShape(), CameraOverlayShape::circle);
}

TEST_F(AppModelSettings, AreClampedWhereTheyAreSliders) {
    struct Row {
        void (AppModel::*set)(double);
        double (AppModelFields::*get)() const;
        PreferenceKey<double> key;
        double least;
        double most;
    };
    const Row rows[] = {
        {&AppModel::setClickIndicatorIntensity, &AppModelFields::clickIndicatorIntensity, keys::clickIndicatorIntensity,
         0.5, 2},
        {&AppModel::setCursorHighlightIntensity, &AppModelFields::cursorHighlightIntensity,
         keys::cursorHighlightIntensity, 0.2, 1},
        {&AppModel::setCursorHighlightSize, &AppModelFields::cursorHighlightSize, keys::cursorHighlightSize, 32, 80},
    };
    makeModel();
    for (const Row& row : rows) {
        const double middle = (row.least + row.most) / 2;
        for (const auto& [value, wanted] : {std::pair(row.least - 1, row.least),
                                            {row.most * 2, row.most},
                                            {middle, middle},
                                            {std::nan(""), row.least}}) {
            ((*model).*row.set)(value);
            EXPECT_EQ(((*model).*row.get)(), wanted) << row.key.name;
            EXPECT_EQ(preferences.value(row.key), wanted) << row.key.name;
        }
    }
    const PointerEffectsSnapshot effects = pointerMonitor->snapshot();
    EXPECT_EQ(effects.clickIndicatorIntensity, 0.5);
    EXPECT_EQ(effects.cursorHighlightSize, 32);
}

TEST_F(AppModelSettings, ConsentStartsAndEndsTheReports) {
    perform("record press save");
    EXPECT_EQ(telemetrySent(), QStringList());
    model->setAnalyticsEnabled(true);
    Q_EMIT analytics.application.didBecomeActive();
    model->setCurrentSelection(wholeDisplay);
    press();
    EXPECT_EQ(telemetrySent(), QStringList{"recording_started"});
    model->setAnalyticsEnabled(false);
    press();
    finish(take);
    EXPECT_EQ(telemetrySent(), QStringList{"recording_started"});
}

TEST_F(AppModelSettings, AFolderIsChosen) {
    const QUrl before = makeModel().outputDirectoryURL();
    const QUrl chosen = QUrl::fromLocalFile(folder.filePath("a, é"));
    model->setIsSettingsPresented(true);
    dialogs->answers.holds = true;
    dialogs->choice = std::optional(chosen);
    model->chooseOutputDirectory();
    EXPECT_FALSE(model->isSettingsPresented());
    time.advance(79ms);
    EXPECT_TRUE(dialogs->shown.isEmpty());
    time.advance(1ms);
    EXPECT_EQ(dialogs->shown, (QList<FolderDialog>{{"Recording folder", "Select", before}}));
    releaseAll();

    EXPECT_EQ(model->outputDirectoryURL(), chosen);
    EXPECT_EQ(stored("preferences.outputDirectoryPath"), chosen.toLocalFile());
    EXPECT_TRUE(model->isSettingsPresented());
    ASSERT_TRUE(model->notice());
    EXPECT_EQ(*model->notice(), (AppNotice{model->notice()->id, AppNotice::Kind::info, "Output folder updated"}));
    time.advance(4s);
    EXPECT_FALSE(model->notice());
}

} // namespace
} // namespace keldra
