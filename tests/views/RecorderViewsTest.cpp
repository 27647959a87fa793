#include "panels/PanelStage.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickView>
#include <QTranslator>

namespace keldra {
namespace {

using test::PanelStage;

/// Every text in a language that needs two fifths more room.
class LongLanguage final : public QTranslator {
public:
    QString translate(const char*, const char* source, const char*, int) const override {
        const QString text = QString::fromUtf8(source);
        return text + text.left((2 * text.size() + 4) / 5).toLower().replace(' ', 'n');
    }
    bool isEmpty() const override { return false; }
};

QStringList& warnings() {
    static QStringList list;
    return list;
}
void noteWarning(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type != QtDebugMsg && type != QtInfoMsg && !message.contains("This plugin does not support"))
        warnings().append(message);
}

void collect(QQuickItem* item, QList<QQuickItem*>& all) {
    if (!item->isVisible())
        return;
    all.append(item);
    for (QQuickItem* child : item->childItems())
        collect(child, all);
}

QString nameOf(QQuickItem* item) {
    const QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(item);
    return spoken ? spoken->text(QAccessible::Name) : QString();
}

/// The views on a stage of their own, seen by nobody.
class RecorderViews : public ::testing::Test {
protected:
    RecorderViews() {
        warnings().clear();
        m_before = qInstallMessageHandler(noteWarning);
        QAccessible::setActive(true);
    }
    ~RecorderViews() override {
        m_stage.reset();
        EXPECT_EQ(warnings().join('\n').toStdString(), "");
        qInstallMessageHandler(m_before);
    }

    PanelStage& show(const QString& moment) {
        m_stage.reset();
        m_stage = std::make_unique<PanelStage>();
        EXPECT_TRUE(m_stage->show(moment));
        QCoreApplication::processEvents();
        return *m_stage;
    }
    /// The window of the panel with that title, as the user sees it now.
    QQuickView* view(const QString& title) {
        for (QWindow* window : QGuiApplication::topLevelWindows())
            if (window->title() == title && window->isVisible())
                return qobject_cast<QQuickView*>(window);
        ADD_FAILURE() << "no " << title.toStdString();
        return nullptr;
    }
    QList<QQuickView*> views() {
        QList<QQuickView*> found;
        for (QWindow* window : QGuiApplication::topLevelWindows())
            if (auto* each = qobject_cast<QQuickView*>(window); each && each->isVisible())
                found.append(each);
        return found;
    }
    QList<QQuickItem*> items(QQuickView* view) {
        QList<QQuickItem*> all;
        if (view)
            collect(view->contentItem(), all);
        return all;
    }
    QQuickItem* control(QQuickView* view, const QString& name) {
        for (QQuickItem* item : items(view))
            if (item->activeFocusOnTab() && nameOf(item).startsWith(name))
                return item;
        ADD_FAILURE() << "no control " << name.toStdString();
        return nullptr;
    }
    void press(QQuickView* view, const QString& controlName, int key) {
        QQuickItem* item = control(view, controlName);
        if (!item)
            return;
        activate(view);
        item->forceActiveFocus(Qt::TabFocusReason);
        EXPECT_EQ(view->activeFocusItem(), item) << controlName.toStdString();
        type(view, key);
    }
    void activate(QQuickView* view) {
        view->requestActivate();
        QCoreApplication::processEvents();
    }
    void type(QQuickView* view, int key) {
        activate(view);
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier);
            QCoreApplication::sendEvent(view, &event);
        }
        m_stage->time.settle();
        QCoreApplication::processEvents();
    }

    AppModel& model() { return *m_stage->model; }

private:
    std::unique_ptr<PanelStage> m_stage;
    QtMessageHandler m_before = nullptr;
};

TEST_F(RecorderViews, AreQuietAndNameEveryControlInEveryMoment) {
    for (const QString& moment : PanelStage().moments()) {
        SCOPED_TRACE(moment.toStdString());
        show(moment);
        for (QQuickView* each : views())
            for (QQuickItem* item : items(each)) {
                if (!item->activeFocusOnTab())
                    continue;
                EXPECT_FALSE(nameOf(item).isEmpty()) << item->metaObject()->className();
                EXPECT_FALSE(item->property("hint").toString().isEmpty()) << nameOf(item).toStdString();
            }
        EXPECT_EQ(warnings().join('\n').toStdString(), "");
        warnings().clear();
    }
}

TEST_F(RecorderViews, CutNoTextInALongLanguage) {
    LongLanguage language;
    QCoreApplication::installTranslator(&language);
    for (const QString& moment : PanelStage().moments()) {
        SCOPED_TRACE(moment.toStdString());
        show(moment);
        for (QQuickView* each : views())
            for (QQuickItem* item : items(each)) {
                if (!item->inherits("QQuickText") || item->property("text").toString().isEmpty())
                    continue;
                const std::string text = item->property("text").toString().toStdString();
                EXPECT_FALSE(item->property("truncated").toBool()) << text;
                EXPECT_LE(item->property("contentWidth").toDouble(), item->width() + 1) << text;
                EXPECT_LE(item->property("contentHeight").toDouble(), item->height() + 1) << text;
                const QRectF place = item->mapRectToScene(item->boundingRect());
                const bool canScroll = each->title() == language.translate("", "Settings", "", 0);
                EXPECT_TRUE(canScroll || QRectF(-1, -1, each->width() + 2, each->height() + 2).contains(place)) << text;
            }
    }
    QCoreApplication::removeTranslator(&language);
}

TEST_F(RecorderViews, ControlPanelWorksByKeyboard) {
    PanelStage& stage = show("idle");
    QQuickView* panel = view("KELDRA");
    ASSERT_TRUE(panel);
    // Tab reaches every control, in the order in which they stand.
    QStringList reached;
    for (int step = 0; step < 8; ++step) {
        type(panel, Qt::Key_Tab);
        reached.append(nameOf(panel->activeFocusItem()));
    }
    EXPECT_EQ(reached, (QStringList{"Quit app", "Start recording", "Area", "Window", "Display", "Camera", "Microphone",
                                    "Settings"}));
    press(panel, "Camera", Qt::Key_Space);
    EXPECT_TRUE(model().cameraEnabled());
    press(panel, "Microphone", Qt::Key_Return);
    EXPECT_TRUE(model().microphoneEnabled());
    stage.overlays.picked = DisplaySelection{1, "Main"};
    press(panel, "Display", Qt::Key_Space);
    EXPECT_EQ(stage.overlays.asked, QStringList{"display 1"});
    press(panel, "Settings", Qt::Key_Space);
    EXPECT_TRUE(model().isSettingsPresented());
    type(panel, Qt::Key_Escape);
    EXPECT_FALSE(model().isSettingsPresented());
    press(panel, "Start recording", Qt::Key_Return);
    EXPECT_EQ(model().recordingState(), RecordingState::recording);
    EXPECT_FALSE(control(panel, "Display")->isEnabled());
    press(panel, "Stop recording", Qt::Key_Space);
    EXPECT_EQ(model().recordingState(), RecordingState::stopping);
    EXPECT_FALSE(control(panel, "Start recording")->isEnabled());
}

TEST_F(RecorderViews, SettingsWorkByKeyboard) {
    show("settings");
    QQuickView* panel = view("Settings");
    ASSERT_TRUE(panel);
    press(panel, "Show clicks", Qt::Key_Space);
    EXPECT_FALSE(model().showClickIndicators());
    press(panel, "Click intensity", Qt::Key_Right);
    EXPECT_DOUBLE_EQ(model().clickIndicatorIntensity(), 1.05);
    press(panel, "Click sound", Qt::Key_Return);
    EXPECT_TRUE(model().clickSoundEnabled());
    press(panel, "Classic", Qt::Key_Space);
    EXPECT_EQ(model().clickSoundStyle(), ClickSoundStyle::classic);
    press(panel, "Cursor highlight", Qt::Key_Space);
    EXPECT_TRUE(model().showCursorHighlight());
    press(panel, "Intensity", Qt::Key_Left);
    EXPECT_NEAR(model().cursorHighlightIntensity(), 0.63, 0.011);
    press(panel, "Size", Qt::Key_Right);
    EXPECT_DOUBLE_EQ(model().cursorHighlightSize(), 50);
    press(panel, "Camera: Integrated", Qt::Key_Down);
    EXPECT_EQ(model().selectedCameraDeviceID(), "cam-b");
    press(panel, "5 seconds", Qt::Key_Right);
    EXPECT_EQ(model().countdownDuration(), CountdownDuration::ten);
    EXPECT_EQ(nameOf(panel->activeFocusItem()), "10 seconds");
    press(panel, "Low", Qt::Key_Space);
    EXPECT_EQ(model().recordingQuality(), RecordingQuality::low);
    press(panel, "Share usage data", Qt::Key_Space);
    EXPECT_TRUE(model().analyticsEnabled());
    type(panel, Qt::Key_Escape);
    EXPECT_FALSE(model().isSettingsPresented());
}

TEST_F(RecorderViews, SettingsStandStillDuringARecordingWhereTheyMust) {
    show("settings-recording");
    QQuickView* panel = view("Settings");
    for (const char* name : {"5 seconds", "High", "Save to"})
        EXPECT_FALSE(control(panel, name)->isEnabled()) << name;
    for (const char* name : {"Show clicks", "Size", "Camera", "Open a video", "Share"})
        EXPECT_TRUE(control(panel, name)->isEnabled()) << name;
}

TEST_F(RecorderViews, AMenuThatEmptiesCloses) {
    PanelStage& stage = show("settings");
    QQuickView* panel = view("Settings");
    press(panel, "Camera", Qt::Key_Return);
    auto* popup = control(panel, "Camera")->property("popup").value<QObject*>();
    ASSERT_TRUE(popup);
    EXPECT_TRUE(popup->property("visible").toBool());
    stage.devices->connect(stage.devices->cameras, {});
    stage.time.settle();
    EXPECT_FALSE(popup->property("opened").toBool());
    EXPECT_EQ(nameOf(control(panel, "Camera")), "Camera: Not available");
    EXPECT_FALSE(control(panel, "Camera")->isEnabled());
}

TEST_F(RecorderViews, QuestionsAreAnsweredByKeyboard) {
    show("close-confirmation");
    type(view("Quit"), Qt::Key_Escape);
    EXPECT_FALSE(model().isCloseConfirmationPresented());
    show("close-confirmation");
    press(view("Quit"), "Yes", Qt::Key_Return);
    EXPECT_EQ(model().recordingState(), RecordingState::stopping);

    show("selection-required");
    type(view("Nothing selected"), Qt::Key_Escape);
    EXPECT_FALSE(model().isSelectionRequiredPresented());

    PanelStage& stage = show("post-recording");
    press(view("Recording saved"), "Reveal in Finder", Qt::Key_Space);
    EXPECT_EQ(stage.workspace->revealed, QList<QUrl>{QUrl("file:///take.mov")});
    press(view("Recording saved"), "Dismiss", Qt::Key_Space);
    EXPECT_TRUE(model().lastSavedURL().isEmpty());
}

TEST_F(RecorderViews, NoticesSayAndOffer) {
    PanelStage& stage = show("error-action");
    press(view("Notice"), "Open Settings", Qt::Key_Space);
    EXPECT_EQ(stage.workspace->opened, QList<SettingsPage>{SettingsPage::screenCapture});
    show("error");
    EXPECT_TRUE(model().notice());
    press(view("Notice"), "Dismiss", Qt::Key_Return);
    EXPECT_FALSE(model().notice());
}

TEST_F(RecorderViews, TheBubbleIsWhereRecordingsLookForIt) {
    for (const char* moment : {"devices", "camera-square"}) {
        SCOPED_TRACE(moment);
        show(moment);
        QQuickView* panel = view("Camera");
        ASSERT_TRUE(panel);
        const CameraOverlaySnapshot bubble = model().cameraOverlayState()->snapshot();
        const QRectF expected(bubble.frame.x() - panel->x(), 2, bubble.frame.width(), bubble.frame.height());
        bool isFound = false;
        for (QQuickItem* item : items(panel))
            if (item->inherits("keldra::CameraPreview")) {
                const QRectF place = item->mapRectToScene(QRectF(QPointF(), item->size()));
                EXPECT_LE(std::abs(place.x() - expected.x()), 0.5);
                EXPECT_EQ(place.size(), expected.size());
                EXPECT_EQ(place.y(), expected.y());
                isFound = true;
            }
        EXPECT_TRUE(isFound);
        const QImage picture = panel->grabWindow();
        EXPECT_EQ(QColor(picture.pixel(panel->width() / 2, 100)), QColor(222, 170, 130)) << "a face";
        EXPECT_EQ(QColor(picture.pixel(2, 6)), QColor(Qt::black)) << "nothing around it";
    }
    show("recording");
    press(view("Camera"), "Stop recording", Qt::Key_Space);
    EXPECT_EQ(model().recordingState(), RecordingState::stopping);
}

TEST_F(RecorderViews, TheTimerReadsAloud) {
    show("recording");
    QStringList spoken;
    for (QQuickItem* item : items(view("Recording time")))
        spoken.append(nameOf(item));
    EXPECT_TRUE(spoken.contains("Recording time 00:01:23")) << spoken.join('|').toStdString();
}

} // namespace
} // namespace keldra
