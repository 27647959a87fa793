#pragma once

#include "capture_ui/SelectionCandidates.h"
#include "platform/CaptureSelection.h"

#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <optional>

namespace keldra {

/// What there is to pick from, as it was when the selection began.
struct SelectionScene {
    QList<Screen> screens;
    QList<WindowCandidate> windows;
};

/// The rectangle between two points.
QRectF spannedRect(QPointF a, QPointF b);

/// Turns clicks and drags into a selection. Places are desktop points.
class SelectionInteraction {
public:
    enum class Phase { underWay, completed, cancelled };

    SelectionInteraction(CaptureMode mode, SelectionScene scene, std::uint32_t preferredDisplayID);

    void press(QPointF point);
    void move(QPointF point);
    void release(QPointF point);
    void cancel();

    Phase phase() const { return m_phase; }
    /// Once completed.
    const std::optional<CaptureSelection>& selection() const { return m_selection; }

    CaptureMode mode() const { return m_mode; }
    const SelectionScene& scene() const { return m_scene; }
    /// Whether a region has been begun.
    bool hasBegun() const { return m_startPoint.has_value(); }
    /// The region dragged so far, once it is large enough to be one.
    std::optional<QRectF> draggedRegion() const;
    const std::optional<WindowCandidate>& highlightedWindow() const { return m_highlightedWindow; }
    const std::optional<Screen>& highlightedDisplay() const { return m_highlightedDisplay; }

private:
    void complete(CaptureSelection selection);
    void pickWindow(QPointF point);
    void pickDisplay(QPointF point);
    void pickRegion();

    CaptureMode m_mode;
    SelectionScene m_scene;
    Phase m_phase = Phase::underWay;
    std::optional<CaptureSelection> m_selection;
    std::optional<QPointF> m_startPoint;
    QPointF m_currentPoint;
    std::optional<WindowCandidate> m_highlightedWindow;
    std::optional<Screen> m_highlightedDisplay;
};

} // namespace keldra
