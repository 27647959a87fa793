#include "ui_kit/Box.h"

#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>
#include <QSGRenderNode>
#include <QSGRendererInterface>

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Paints where the software renderer's painter stands.
class BoxNode final : public QSGRenderNode {
public:
    explicit BoxNode(QQuickWindow* window) : m_window(window) {}

    void setLook(const BoxLook& look) {
        m_look = look;
        markDirty(DirtyMaterial);
    }
    void render(const RenderState* state) override {
        const QSGRendererInterface* renderer = m_window->rendererInterface();
        auto* painter = static_cast<QPainter*>(renderer->getResource(m_window, QSGRendererInterface::PainterResource));
        if (painter == nullptr)
            return;
        // Before the transformation: it is told in the scene's units.
        if (const QRegion* clip = state->clipRegion(); clip != nullptr && !clip->isEmpty())
            painter->setClipRegion(*clip, Qt::ReplaceClip);
        painter->setOpacity(inheritedOpacity());
        paintBox(*painter, m_look, matrix()->toTransform(), painter->device()->devicePixelRatio());
    }
    RenderingFlags flags() const override { return BoundedRectRendering; }
    QRectF rect() const override { return m_look.rect; }

private:
    QQuickWindow* const m_window;
    BoxLook m_look;
};

QRectF onWholePixels(const QRectF& rect, const QSize& device) {
    const double left = std::round(rect.left()), top = std::round(rect.top());
    const double right = std::min<double>(std::round(rect.right()), device.width());
    const double bottom = std::min<double>(std::round(rect.bottom()), device.height());
    return {left, top, std::max(right - left, 0.0), std::max(bottom - top, 0.0)};
}

QPainterPath roundedPath(const QRectF& rect, double radius) {
    const double most = std::min(rect.width(), rect.height()) / 2;
    QPainterPath path;
    path.addRoundedRect(rect, std::clamp(radius, 0.0, most), std::clamp(radius, 0.0, most));
    return path;
}

} // namespace

void paintBox(QPainter& painter, const BoxLook& look, const QTransform& toScene, double pixels) {
    const QTransform toPixels = toScene * QTransform::fromScale(pixels, pixels);
    const double scale = std::hypot(toPixels.m11(), toPixels.m12());
    const QSize device(painter.device()->width(), painter.device()->height());
    const QRectF outer = onWholePixels(toPixels.mapRect(look.rect), device);
    const double line = look.borderWidth > 0 ? std::max(std::round(look.borderWidth * scale), 1.0) : 0;
    const QRectF inner = outer.adjusted(line, line, -line, -line);
    painter.setTransform(QTransform::fromScale(1 / pixels, 1 / pixels));
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath hole = roundedPath(inner, look.radius * scale - line);
    painter.fillPath(hole, look.color);
    if (line > 0) {
        QPainterPath ring = roundedPath(outer, look.radius * scale);
        ring.addPath(hole);
        painter.fillPath(ring, look.borderColor);
    }
}

Box::Box(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(this, &Box::changed, this, &QQuickItem::update);
    connect(&m_border, &BoxBorder::changed, this, &QQuickItem::update);
}

QSGNode* Box::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    auto* box = static_cast<BoxNode*>(node);
    if (box == nullptr)
        box = new BoxNode(window());
    box->setLook({boundingRect(), m_radius, m_color, m_border.width(), m_border.color()});
    return box;
}

void Box::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    update();
}

} // namespace keldra
