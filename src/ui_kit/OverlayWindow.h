#pragma once

#include "async/Scheduler.h"
#include "platform/OwnWindows.h"
#include "ui_kit/Overlay.h"
#include "ui_kit/RegisteredWindow.h"

#include <QImage>
#include <QRasterWindow>
#include <QRegion>

#include <memory>

namespace keldra {

/// An overlay as a window of Qt's. Whether it is translucent is settled when it is made.
///
/// Level aboveAll is a window that window managers do not see. Level belowPanels is one that they keep above others, as
/// they do panels, sent to the back of those; a window that they do not see would stay above panels or sink below
/// whatever is raised next.
class OverlayWindow final : public QRasterWindow, public Overlay {
    Q_OBJECT

public:
    OverlayWindow(const OverlayOptions& options, OverlayView& view, bool isTranslucent,
                  std::shared_ptr<OwnWindows> ownWindows, Scheduler& scheduler);
    ~OverlayWindow() override;

    void orderFront() override;
    void repaint(const QRectF& part) override;
    void setCursor(Qt::CursorShape cursor) override { QRasterWindow::setCursor(cursor); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    Qt::WindowFlags flagsFor(const OverlayOptions& options) const;
    void watchDesktop();
    void place();
    QRect rootRect() const;
    void sendBelowPanels();
    void takeKeyboard();
    void applyShape();
    bool isShaped() const { return !m_isTranslucent && m_options.substitute == OverlayOptions::Substitute::shape; }
    QPointF pointOf(const QMouseEvent& event) const;

    const OverlayOptions m_options;
    const ViewSpace m_space;
    OverlayView& m_view;
    const bool m_isTranslucent;
    Scheduler& m_scheduler;
    Timer m_keyboardRetry;
    /// What lies below, where that does not shine through.
    QImage m_ground;
    QRegion m_shape;
    bool m_wasExposed = false;
    RegisteredWindow m_registration;
};

/// Makes OverlayWindows.
class DesktopOverlays final : public Overlays {
public:
    /// `scheduler` must outlive this object and its overlays.
    DesktopOverlays(std::shared_ptr<OwnWindows> ownWindows, Scheduler& scheduler);
    bool areTranslucent() const override;
    bool canCover() const override;
    std::unique_ptr<Overlay> make(const OverlayOptions& options, OverlayView& view) override;

private:
    const std::shared_ptr<OwnWindows> m_ownWindows;
    Scheduler& m_scheduler;
};

} // namespace keldra
