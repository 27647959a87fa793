#pragma once

#include "capture_ui/CameraPreviewFeed.h"
#include "recording/CameraBubble.h"

#include <QImage>
#include <QPointer>
#include <QQuickPaintedItem>

namespace keldra {

/// Shows the pictures of a feed, as the bubble that a recording shows. Repaints only for a new picture. Main thread.
class CameraPreview : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(keldra::CameraPreviewFeed* feed READ feed WRITE setFeed NOTIFY feedChanged)
    Q_PROPERTY(double cornerRadius READ cornerRadius WRITE setCornerRadius NOTIFY cornerRadiusChanged)

public:
    explicit CameraPreview(QQuickItem* parent = nullptr);

    CameraPreviewFeed* feed() const { return m_feed; }
    void setFeed(CameraPreviewFeed* feed);
    /// Points.
    double cornerRadius() const { return m_cornerRadius; }
    void setCornerRadius(double radius);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void feedChanged();
    void cornerRadiusChanged();

private:
    QPointer<CameraPreviewFeed> m_feed;
    double m_cornerRadius = 0;
    CameraBubble m_bubble;
    /// The bubble in the window's pixels.
    QImage m_image;
};

} // namespace keldra
