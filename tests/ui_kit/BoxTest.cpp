#include "ui_kit/Box.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(Box, HasItsEdgesOnWholePixelsAtEveryScale) {
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        SCOPED_TRACE(scale);
        QImage image(120, 90, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        const BoxLook look{{0, 0, 35.3, 25.1}, 6, Qt::red, 1, Qt::blue};
        QPainter painter(&image);
        paintBox(painter, look, QTransform::fromTranslate(7.7, 5.9), scale);
        painter.end();
        const int left = qRound(7.7 * scale), right = qRound((7.7 + 35.3) * scale) - 1;
        const int top = qRound(5.9 * scale), bottom = qRound((5.9 + 25.1) * scale) - 1;
        const int line = qRound(scale);
        const QPoint middle((left + right) / 2, (top + bottom) / 2);
        const auto at = [&](int x, int y) { return image.pixelColor(x, y); };
        for (const auto& [edge, step] : {std::pair(QPoint(left, middle.y()), QPoint(1, 0)),
                                         {QPoint(right, middle.y()), QPoint(-1, 0)},
                                         {QPoint(middle.x(), top), QPoint(0, 1)},
                                         {QPoint(middle.x(), bottom), QPoint(0, -1)}}) {
            EXPECT_EQ(at(edge.x() - step.x(), edge.y() - step.y()), QColor(Qt::transparent));
            for (int depth = 0; depth <= line; ++depth)
                EXPECT_EQ(at(edge.x() + depth * step.x(), edge.y() + depth * step.y()),
                          depth < line ? Qt::blue : Qt::red)
                    << depth;
        }
        for (const int x : {left, right})
            for (const int y : {top, bottom})
                EXPECT_EQ(at(x, y).alpha(), 0) << "round corners";
    }
}

TEST(Box, EndsWhereItsWindowEnds) {
    QImage image(50, 50, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    // Half a pixel more than there is.
    paintBox(painter, {{0, 0, 50.5, 50.5}, 0, Qt::red, 1, Qt::blue}, {}, 1);
    painter.end();
    EXPECT_EQ(image.pixelColor(49, 25), Qt::blue);
    EXPECT_EQ(image.pixelColor(25, 49), Qt::blue);
}

} // namespace
} // namespace keldra
