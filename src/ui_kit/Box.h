#pragma once

#include <QColor>
#include <QObject>
#include <QQuickItem>

namespace keldra {

/// The line along the inside of a box's edge. Main thread.
class BoxBorder : public QObject {
    Q_OBJECT
    Q_PROPERTY(double width MEMBER m_width NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)

public:
    using QObject::QObject;
    double width() const { return m_width; }
    const QColor& color() const { return m_color; }

Q_SIGNALS:
    void changed();

private:
    double m_width = 0;
    QColor m_color = Qt::black;
};

/// A box with round corners that Qt Quick's software renderer paints with its edges on whole pixels at every scale; its
/// Rectangle breaks at the corners where a unit is no whole number of pixels. Main thread.
class Box : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(double radius MEMBER m_radius NOTIFY changed)
    Q_PROPERTY(keldra::BoxBorder* border READ border CONSTANT)

public:
    explicit Box(QQuickItem* parent = nullptr);
    BoxBorder* border() { return &m_border; }

Q_SIGNALS:
    void changed();

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

private:
    QColor m_color = Qt::white;
    double m_radius = 0;
    BoxBorder m_border;
};

/// What a box looks like, in units.
struct BoxLook {
    QRectF rect;
    double radius = 0;
    QColor color;
    double borderWidth = 0;
    QColor borderColor;
};

/// Paints it with its edges on whole pixels within the device. `toScene` leads from its units to those of the scene, a
/// unit of which is `pixels` pixels.
void paintBox(QPainter& painter, const BoxLook& look, const QTransform& toScene, double pixels);

} // namespace keldra
