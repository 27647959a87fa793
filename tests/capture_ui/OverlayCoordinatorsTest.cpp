#include "capture_ui/CountdownView.h"
#include "capture_ui/DesktopCountdownCoordinator.h"
#include "capture_ui/DesktopCursorEffectsOverlayCoordinator.h"
#include "capture_ui/DesktopSelectionCoordinator.h"
#include "capture_ui/DesktopSelectionPreviewCoordinator.h"
#include "doubles/FixedDesktop.h"
#include "doubles/ScriptedOverlays.h"
#include "doubles/ScriptedPointer.h"
#include "doubles/VirtualTime.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using Answer = std::optional<std::optional<CaptureSelection>>;
const Answer cancelled{std::in_place, std::nullopt};

Screen screen(std::uint32_t number, const QRectF& frame) {
    return {number, QStringLiteral("Screen %1").arg(number), frame, frame, 1};
}

class OverlayCoordinators : public testing::Test {
protected:
    VirtualTime time;
    std::shared_ptr<FixedScreens> screens =
        std::make_shared<FixedScreens>(QList<Screen>{screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 600, 400})});
    std::shared_ptr<FixedWindows> windows = std::make_shared<FixedWindows>();
    std::shared_ptr<ScriptedPointer> pointer = std::make_shared<ScriptedPointer>();
    PointerEffectsMonitor effects{pointer, std::make_shared<OwnWindows>(), time.clock(), time.scheduler()};
    ScriptedOverlays overlays;
    const QRectF desktop{0, 0, 1600, 800};
};

/// Paints the part of the view that a test looks at.
QColor pixelOf(OverlayView& view, const QRectF& frame, QPointF point) {
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const ViewSpace space{frame};
    QPainter painter(&image);
    painter.translate(-space.toView(point));
    view.paint(painter, space);
    painter.end();
    return image.pixelColor(0, 0);
}

constexpr int dimAlpha = 133;

class Selecting : public OverlayCoordinators {
protected:
    ~Selecting() override {
        coordinator.reset();
        time.settle();
    }
    Answer& begin(QCoro::Task<std::optional<CaptureSelection>> task) {
        const auto answer = std::make_shared<Answer>();
        answers.push_back(answer);
        task.then([answer](std::optional<CaptureSelection> selection) { *answer = std::move(selection); });
        return *answer;
    }
    void drag(QPointF from, QPointF to) {
        OverlayView& view = *overlays.last().view;
        view.mousePressed(from);
        view.mouseMoved(to);
        view.mouseReleased(to);
    }
    DesktopCursorEffectsOverlayCoordinator cursorEffects{{screens, overlays, effects, time.scheduler()}};
    std::unique_ptr<DesktopSelectionCoordinator> coordinator =
        std::make_unique<DesktopSelectionCoordinator>(DesktopSelectionCoordinator::Parts{
            screens, windows, overlays, effects, cursorEffects, time.scheduler(), time.mainQueue()});
    std::vector<std::shared_ptr<Answer>> answers;
};

TEST_F(Selecting, CoversTheDesktopOfThatMomentAndAnswersInALaterTurn) {
    screens->current.append(screen(3, {-300, 100, 300, 300}));
    Answer& answer = begin(coordinator->selectRegion());
    ASSERT_TRUE(overlays.isAnyShown());
    OverlayOptions expected;
    expected.identifier = "selection-overlay";
    expected.frame = {-300, 0, 1900, 800};
    expected.substitute = OverlayOptions::Substitute::screenshot;
    expected.takesKeyboard = true;
    EXPECT_EQ(overlays.last().options, expected);
    EXPECT_EQ(overlays.last().cursor, Qt::CrossCursor);
    drag({-200, 150}, {-100, 350});
    EXPECT_TRUE(overlays.isAnyShown()) << "it is not destroyed by its own event";
    time.settle();
    EXPECT_FALSE(overlays.isAnyShown());
    EXPECT_EQ(answer, Answer(RegionSelection{3, {-200, 150, 100, 200}}));
}

TEST_F(Selecting, EscapeAndAChangeOfMonitorsCancelEveryMode) {
    for (const bool byEscape : {true, false})
        for (int mode = 0; mode < 3; ++mode) {
            Answer& answer = begin(mode == 0   ? coordinator->selectRegion()
                                   : mode == 1 ? coordinator->selectWindow()
                                               : coordinator->selectDisplay(2));
            EXPECT_EQ(overlays.last().cursor, mode == 2 ? Qt::ArrowCursor : Qt::CrossCursor);
            overlays.last().view->keyPressed(Qt::Key_Space);
            time.settle();
            EXPECT_FALSE(answer);
            if (byEscape)
                overlays.last().view->keyPressed(Qt::Key_Escape);
            else
                overlays.last().view->desktopChanged();
            time.settle();
            EXPECT_EQ(answer, cancelled) << mode;
            EXPECT_FALSE(overlays.isAnyShown());
        }
}

TEST_F(Selecting, TheSecondOfTwoAtOnceWins) {
    Answer& first = begin(coordinator->selectRegion());
    Answer& second = begin(coordinator->selectDisplay(1));
    time.settle();
    EXPECT_EQ(first, cancelled);
    EXPECT_FALSE(second);
    overlays.last().view->mousePressed({1200, 100});
    time.settle();
    EXPECT_EQ(second, Answer(DisplaySelection{2, "Screen 2"}));
}

TEST_F(Selecting, WaitsForWindowsToPaintThemselvesWhereThePictureOfTheScreenIsTaken) {
    overlays.isTranslucent = false;
    begin(coordinator->selectRegion());
    EXPECT_TRUE(overlays.made.empty());
    time.advance(1s);
    EXPECT_TRUE(overlays.isAnyShown());
}

TEST_F(Selecting, IsCancelledWithItsCoordinator) {
    Answer& finishing = begin(coordinator->selectRegion());
    drag({100, 100}, {300, 300});
    Answer& waiting = begin(coordinator->selectRegion());
    coordinator.reset();
    EXPECT_FALSE(waiting) << "in a later turn, when whoever else goes has gone";
    time.settle();
    EXPECT_FALSE(overlays.isAnyShown());
    EXPECT_EQ(finishing, cancelled);
    EXPECT_EQ(waiting, cancelled);
}

TEST_F(Selecting, ShowsTheEffectsInPlaceOfTheirOwnOverlay) {
    PointerEffectsSettings settings;
    settings.showsCursorHighlight = true;
    effects.updateSettings(settings);
    pointer->place = {1500, 50};
    cursorEffects.show();
    time.advance(20ms);
    OverlayView& usual = *overlays.last().view;
    EXPECT_GT(pixelOf(usual, desktop, {1500, 60}).alpha(), 0);

    begin(coordinator->selectRegion());
    OverlayView& view = *overlays.last().view;
    EXPECT_EQ(pixelOf(usual, desktop, {1500, 60}).alpha(), 0);
    time.advance(20ms);
    EXPECT_GT(pixelOf(view, desktop, {1500, 60}).red(), 60) << "yellow over the dimmed desktop";
    view.keyPressed(Qt::Key_Escape);
    time.advance(20ms);
    EXPECT_GT(pixelOf(usual, desktop, {1500, 60}).alpha(), 0);
}

class CursorEffects : public OverlayCoordinators {
protected:
    CursorEffects() {
        PointerEffectsSettings settings;
        settings.showsCursorHighlight = true;
        effects.updateSettings(settings);
        pointer->place = {100, 100};
    }
    QList<QRectF> repaintedWithin(Duration duration) {
        overlays.last().repainted.clear();
        time.advance(duration);
        return overlays.last().repainted;
    }
    DesktopCursorEffectsOverlayCoordinator coordinator{{screens, overlays, effects, time.scheduler()}};
};

TEST_F(CursorEffects, AStillPointerCostsNothing) {
    coordinator.show();
    coordinator.show();
    ASSERT_EQ(overlays.made.size(), 1U);
    EXPECT_TRUE(overlays.last().options.letsClicksThrough);
    EXPECT_FALSE(overlays.last().options.takesKeyboard);
    EXPECT_EQ(overlays.last().options.frame, desktop);
    EXPECT_FALSE(repaintedWithin(100ms).isEmpty());
    EXPECT_TRUE(repaintedWithin(5s).isEmpty());

    pointer->place = {400, 300};
    const QList<QRectF> moved = repaintedWithin(100ms);
    const auto holds = [&](QPointF point) {
        return std::any_of(moved.begin(), moved.end(), [&](const QRectF& part) { return part.contains(point); });
    };
    EXPECT_TRUE(holds({100, 100}) && holds({400, 300})) << "where it was, and where it is";
    EXPECT_FALSE(holds({250, 200}));

    pointer->click();
    EXPECT_GT(repaintedWithin(520ms).size(), 30) << "at every step of the ripple";
    time.advance(100ms);
    EXPECT_TRUE(repaintedWithin(5s).isEmpty());
}

TEST_F(CursorEffects, WhereNothingShinesThroughOnlyLinesAreThere) {
    overlays.isTranslucent = false;
    coordinator.show();
    time.advance(20ms);
    const ViewSpace space{desktop};
    const QPainterPath shape = overlays.last().view->shape(space);
    EXPECT_TRUE(shape.contains(space.toView(QPointF(100 + 23, 100)))) << "the highlight's edge";
    EXPECT_FALSE(shape.contains(space.toView(QPointF(100, 100)))) << "what is pointed at stays in sight";
    coordinator.setPaused(true);
    EXPECT_TRUE(overlays.last().view->shape(space).isEmpty());
}

class HeardSounds final : public SystemSounds {
public:
    void play(const QString& name) override { names.append(name); }
    QStringList names;
};

class Countdown : public OverlayCoordinators {
protected:
    ~Countdown() override { time.advance(5s); }
    bool& begin(int seconds) {
        coordinator->run(seconds).then([this] { isDone = true; });
        return isDone;
    }
    std::shared_ptr<HeardSounds> sounds = std::make_shared<HeardSounds>();
    std::unique_ptr<DesktopCountdownCoordinator> coordinator = std::make_unique<DesktopCountdownCoordinator>(
        DesktopCountdownCoordinator::Parts{screens, sounds, time.clock(), overlays, time.scheduler()});
    bool isDone = false;
};

TEST_F(Countdown, TicksAtOnceAndEverySecondAndEndsOnTime) {
    begin(3);
    EXPECT_EQ(sounds->names, QStringList{"Tink"});
    EXPECT_EQ(overlays.last().options.frame, desktop);
    EXPECT_TRUE(overlays.last().options.letsClicksThrough);
    time.advance(1999ms);
    EXPECT_EQ(sounds->names, (QStringList{"Tink", "Tink"}));
    time.advance(1000ms);
    EXPECT_EQ(sounds->names, (QStringList{"Tink", "Tink", "Hero"}));
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(overlays.isAnyShown());
    time.advance(1ms);
    EXPECT_TRUE(isDone);
    EXPECT_FALSE(overlays.isAnyShown());
}

TEST_F(Countdown, MovesOnlyWhileTheNumberChanges) {
    begin(2);
    const auto repaintsWithin = [&](Duration duration) {
        overlays.last().repainted.clear();
        time.advance(duration);
        return overlays.last().repainted.size();
    };
    EXPECT_GE(repaintsWithin(320ms), 18);
    EXPECT_LE(repaintsWithin(600ms), 1);
    for (const QRectF& part : overlays.last().repainted)
        EXPECT_EQ(part.center(), QPointF(800, 400)) << "the middle of all screens";
}

TEST_F(Countdown, IsAWindowOfItsOwnSizeWhereNothingCanLieOverTheDesktop) {
    overlays.covers = false;
    begin(1);
    EXPECT_EQ(overlays.last().options.frame, QRectF(650, 250, 300, 300));
}

TEST_F(Countdown, GoesWithItsCoordinator) {
    begin(3);
    time.advance(500ms);
    coordinator.reset();
    EXPECT_FALSE(overlays.isAnyShown());
    time.advance(5s);
    EXPECT_EQ(sounds->names.size(), 1);
}

TEST(CountdownLooks, GrowInAndFadeOut) {
    EXPECT_EQ(countdownLook(0), (CountdownLook{0, 0.86, 1}));
    EXPECT_NEAR(countdownLook(0.16).opacity, 0.5, 1e-3);
    EXPECT_LT(countdownLook(0.04).opacity, 0.125) << "slow at first";
    EXPECT_EQ(countdownLook(0.32), (CountdownLook{1, 1, 0}));
    EXPECT_EQ(countdownLook(0.9), countdownLook(0.32));
}

/// One watch at a time.
class PressedKeys final : public EventMonitor {
public:
    Watch watch(WindowEvent::Kind kind, Handler handler) override {
        const auto watch = std::make_shared<Handler>(std::move(handler));
        m_watch = watch;
        m_kind = kind;
        return watch;
    }
    bool isWatched() const { return !m_watch.expired(); }
    bool press(int key) {
        WindowEvent event;
        event.kind = WindowEvent::Kind::keyDown;
        event.key = key;
        const auto watch = m_watch.lock();
        return watch && m_kind == event.kind && (*watch)(event);
    }

private:
    std::weak_ptr<Handler> m_watch;
    WindowEvent::Kind m_kind{};
};

class Preview : public OverlayCoordinators {
protected:
    void show(const CaptureSelection& selection) {
        coordinator.show(
            selection, [this](QRectF changed) { changes.append(changed); }, [this] { ++cancels; });
    }
    OverlayView& view() { return *overlays.last().view; }
    void drag(QPointF from, QPointF to) {
        view().mousePressed(from);
        view().mouseMoved((from + to) / 2);
        view().mouseMoved(to);
        view().mouseReleased(to);
    }
    std::shared_ptr<PressedKeys> keys = std::make_shared<PressedKeys>();
    DesktopSelectionPreviewCoordinator coordinator{{screens, windows, keys, overlays, time.mainQueue()}};
    QList<QRectF> changes;
    int cancels = 0;
    const QRectF region{200, 300, 400, 200};
};

TEST_F(Preview, ShowsWhatWillBeRecordedAndDimsTheRest) {
    windows->live = QRectF(50, 50, 300, 200);
    const struct {
        const char* name;
        CaptureSelection selection;
        QRectF clear;
        bool isEditable;
    } rows[] = {{"region", RegionSelection{1, region}, region, true},
                {"display", DisplaySelection{2, {}}, {1000, 0, 600, 400}, false},
                {"window, where it is now", WindowSelection{1, 9, {0, 0, 10, 10}, {}}, *windows->live, false}};
    for (const auto& [name, selection, clear, isEditable] : rows) {
        show(selection);
        EXPECT_EQ(overlays.last().options.level, OverlayOptions::Level::belowPanels);
        EXPECT_EQ(overlays.last().options.letsClicksThrough, !isEditable) << name;
        EXPECT_EQ(overlays.last().options.frame, desktop);
        EXPECT_EQ(pixelOf(view(), desktop, clear.center()).alpha(), 0) << name;
        EXPECT_EQ(pixelOf(view(), desktop, {700, 700}).alpha(), dimAlpha) << name;
    }
    show(DisplaySelection{5, {}});
    EXPECT_FALSE(overlays.isAnyShown()) << "a display that is gone";
    EXPECT_FALSE(keys->isWatched());
}

TEST_F(Preview, EveryMouseUpTellsTheRegion) {
    show(RegionSelection{1, region});
    drag({400, 400}, {450, 380});
    view().mousePressed({900, 700});
    view().mouseReleased({900, 700});
    drag({250, 280}, {240, 270});
    EXPECT_EQ(changes, (QList<QRectF>{{250, 280, 400, 200}, {250, 280, 400, 200}, {240, 270, 410, 210}}));
    show(DisplaySelection{1, {}});
    view().mousePressed({400, 400});
    view().mouseReleased({450, 450});
    EXPECT_EQ(changes.size(), 3) << "only a region can be changed";
}

TEST_F(Preview, TheSameWindowShowsTheNextRegion) {
    show(RegionSelection{1, region});
    show(RegionSelection{1, {0, 0, 100, 100}});
    EXPECT_EQ(overlays.made.size(), 1U) << "so that nothing flickers after a drag";
    EXPECT_EQ(pixelOf(view(), desktop, {50, 50}).alpha(), 0);
    show(DisplaySelection{1, {}});
    EXPECT_EQ(overlays.made.size(), 2U) << "clicks go through this one";
    screens->current.removeLast();
    view().desktopChanged();
    EXPECT_EQ(overlays.last().options.frame, QRectF(0, 0, 1000, 800));
    time.settle();
    coordinator.hide();
    EXPECT_FALSE(overlays.isAnyShown());
}

TEST_F(Preview, MayBeHiddenByWhatItTells) {
    coordinator.show(
        RegionSelection{1, region}, [this](QRectF) { coordinator.hide(); }, [] {});
    drag({400, 400}, {450, 380});
    time.settle();
    EXPECT_FALSE(overlays.isAnyShown());
}

TEST_F(Preview, EscapeCancelsAndOtherKeysPassOn) {
    show(RegionSelection{1, region});
    EXPECT_FALSE(keys->press(Qt::Key_A));
    EXPECT_TRUE(keys->press(Qt::Key_Escape));
    EXPECT_EQ(cancels, 0) << "in a later turn";
    time.settle();
    EXPECT_EQ(cancels, 1);
    coordinator.hide();
    EXPECT_FALSE(keys->press(Qt::Key_Escape));
}

TEST_F(Preview, WhereNothingShinesThroughTheLabelIsAGrip) {
    overlays.isTranslucent = false;
    show(RegionSelection{1, region});
    const ViewSpace space{desktop};
    const QPainterPath shape = view().shape(space);
    EXPECT_TRUE(shape.contains(space.toView(QPointF(202, 400)))) << "the border";
    EXPECT_FALSE(shape.contains(space.toView(QPointF(400, 400)))) << "the desktop below is at hand";
    EXPECT_FALSE(shape.contains(space.toView(QPointF(900, 700))));
    const QPointF label(400, 281);
    EXPECT_TRUE(shape.contains(space.toView(label)));
    drag(label, label + QPointF(10, 20));
    EXPECT_EQ(changes, (QList<QRectF>{{210, 320, 400, 200}}));
}

} // namespace
} // namespace keldra
