#pragma once

#include "ui_kit/Overlay.h"

#include <QList>

#include <memory>
#include <vector>

namespace keldra {

/// What became of an overlay that nobody sees.
struct ScriptedOverlay {
    OverlayOptions options;
    /// To act as its user; null once the overlay is gone.
    OverlayView* view = nullptr;
    bool isInFront = false;
    Qt::CursorShape cursor = Qt::ArrowCursor;
    QList<QRectF> repainted;
};

/// Overlays on no screen.
class ScriptedOverlays final : public Overlays {
public:
    bool areTranslucent() const override { return isTranslucent; }
    bool canCover() const override { return covers; }
    std::unique_ptr<Overlay> make(const OverlayOptions& options, OverlayView& view) override {
        made.push_back(std::make_shared<ScriptedOverlay>(ScriptedOverlay{options, &view, false, {}, {}}));
        return std::make_unique<Handle>(made.back());
    }

    ScriptedOverlay& last() { return *made.back(); }
    bool isAnyShown() const {
        for (const auto& overlay : made)
            if (overlay->view != nullptr)
                return true;
        return false;
    }

    bool isTranslucent = true;
    bool covers = true;
    std::vector<std::shared_ptr<ScriptedOverlay>> made;

private:
    class Handle final : public Overlay {
    public:
        explicit Handle(std::shared_ptr<ScriptedOverlay> overlay) : m_overlay(std::move(overlay)) {}
        ~Handle() override {
            m_overlay->view = nullptr;
            m_overlay->isInFront = false;
        }
        void orderFront() override { m_overlay->isInFront = true; }
        void repaint(const QRectF& part) override { m_overlay->repainted.append(part); }
        void setCursor(Qt::CursorShape cursor) override { m_overlay->cursor = cursor; }

    private:
        std::shared_ptr<ScriptedOverlay> m_overlay;
    };
};

} // namespace keldra
