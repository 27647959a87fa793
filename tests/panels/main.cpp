// Shows the recorder's panels in one moment, for people who work on their look:
//
//   keldra_panels                 names the moments
//   keldra_panels MOMENT          shows one until it is killed; writes a line once it is drawn
//   KELDRA_PANELS_NAME=notice     ... and gives that panel the keyboard

#include "launch/Translations.h"
#include "panels/PanelStage.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv) {
    using namespace std::chrono_literals;
    keldra::UiKit::chooseRenderer();
    QGuiApplication application(argc, argv);
    keldra::installTranslations();
    QGuiApplication::setQuitOnLastWindowClosed(false);
    keldra::test::PanelStage stage;
    const QSizeF screen = application.primaryScreen()->geometry().size();
    stage.screens->current = {{1, "Main", QRectF(QPointF(), screen), QRectF(QPointF(), screen), 1}};
    if (argc != 2 || !stage.show(QString::fromLocal8Bit(argv[1]))) {
        std::puts(stage.moments().join('\n').toLocal8Bit().constData());
        return argc == 1 ? 0 : 2;
    }
    // The desktop's own time goes on, but what waits for seconds stays as it is.
    QTimer turn;
    QObject::connect(&turn, &QTimer::timeout, [&] { stage.time.settle(); });
    turn.start(16ms);
    QTimer::singleShot(700ms, [] {
        std::puts("drawn");
        std::fflush(stdout);
    });
    return application.exec();
}
