#pragma once

#include "ui_kit/Panel.h"
#include "ui_kit/RegisteredWindow.h"
#include "ui_kit/UiKit.h"

#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace keldra {

struct PanelConfiguration {
    /// How OwnWindows and events name it.
    QString identifier;
    /// For the window manager and for who hears the screen.
    QString title;
    QUrl view;
    /// What the view is given.
    QVariantMap properties;
    /// The user moves it by its background.
    bool isMovable = true;
    bool ignoresMouse = false;
    /// Where recordings see every window: stays on the screen during a recording all the same.
    bool mayBeRecorded = false;
};

/// A frameless window that floats above all others, on every desktop and off the taskbar, and shows one view. A view
/// may name an `outline` (parts as in shapeParts()), beside which clicks go through; without a compositing manager the
/// window is cut to it, or to a rounded rectangle.
///
/// On a desktop whose recordings see every window a panel that must not be seen stays off the screen while its sharing
/// type is none.
class FloatingPanel final : public Panel {
    Q_OBJECT

public:
    /// `kit` lives longer.
    FloatingPanel(PanelConfiguration configuration, UiKit& kit);
    ~FloatingPanel() override;

    QRectF frame() const override { return m_frame; }
    void setOrigin(QPointF origin) override;
    void setContentSize(QSizeF size) override;
    void orderFront() override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;
    /// Whether it is ordered in, and is not kept off the screen.
    bool isVisible() const override;
    void setSharingType(SharingType sharingType) override;

    /// Where programs cannot place windows: stands above `host` in the same window, for two windows would lie anywhere.
    /// Elsewhere nothing. Before either is shown; they go together.
    void stayWith(FloatingPanel& host);

    QWindow& window();

private Q_SLOTS:
    void applyShape();

private:
    class View;

    void load();
    void leave();
    void makeRoomFor(const FloatingPanel& companion);
    void placeRoot();
    QRect windowGeometry() const;
    void showRoot(bool isShown, bool takesKeyboard);
    QRegion placesOfClicks(const QRegion& shape) const;
    void place(const QRectF& frame);
    void appear(bool takesKeyboard);
    void exposed();
    void noteMove();
    bool isKeptOff() const;

    const PanelConfiguration m_configuration;
    UiKit& m_kit;
    std::unique_ptr<View> m_view;
    std::unique_ptr<RegisteredWindow> m_registration;
    SharingType m_sharingType = SharingType::readOnly;
    /// Ordered in, whether or not it can be seen.
    bool m_isOrderedIn = false;
    /// As asked for, until somebody else moves the window.
    QRectF m_frame;
    bool m_isPlacing = false;
    /// Shown, and not yet seen.
    bool m_isAppearing = false;
    bool m_isCut = false;
    FloatingPanel* m_host = nullptr;
    QList<FloatingPanel*> m_companions;
    /// For companions, above the panel itself.
    int m_headroom = 0;
};

} // namespace keldra
