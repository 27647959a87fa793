#include "capture_ui/TrayMark.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace keldra {
namespace {

QByteArray readMark(const char* colour) {
    constexpr char drawnColour[] = "#2e3436";
    QFile file(QStringLiteral(":/icons/keldra-mark.svg"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().replace(drawnColour, colour) : QByteArray();
}

QPixmap draw(int size) {
    QSvgRenderer dark(readMark("#101114")), light(readMark("#f4f4f6"));
    const QRectF whole(0, 0, size, size);
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    const double rim = size / 28.0;
    painter.setOpacity(0.6);
    for (const double x : {-rim, rim})
        for (const double y : {-rim, rim})
            dark.render(&painter, whole.translated(x, y));
    painter.setOpacity(1);
    light.render(&painter, whole);
    return picture;
}

} // namespace

QIcon trayMark() {
    QIcon drawn;
    for (const int size : {16, 18, 20, 22, 24, 32, 36, 40, 44, 48, 64})
        drawn.addPixmap(draw(size));
    return QIcon::fromTheme(QGuiApplication::desktopFileName() + QStringLiteral("-symbolic"), drawn);
}

} // namespace keldra
