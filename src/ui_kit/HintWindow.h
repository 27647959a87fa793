#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QString>

#include <memory>

class QQuickView;

namespace keldra {

class RegisteredWindow;
class UiKit;

/// The one small window that says what the control under the pointer does. Main thread.
class HintWindow : public QObject {
    Q_OBJECT

public:
    /// `kit` lives longer.
    explicit HintWindow(UiKit& kit);
    ~HintWindow() override;

    /// Says it above the item, or below where there is no room.
    Q_INVOKABLE void show(QQuickItem* item, const QString& text);
    /// Nothing while another item's is shown.
    Q_INVOKABLE void hide(QQuickItem* item);

private:
    void load();
    void place();

    UiKit& m_kit;
    QPointer<QQuickItem> m_item;
    QMetaObject::Connection m_leaving;
    std::unique_ptr<QQuickView> m_view;
    std::unique_ptr<RegisteredWindow> m_registration;
};

/// Where a hint of that size stands for an item, in the same coordinates as `screen`: centred above it, below where
/// there is no room, and never beside the screen.
QPoint hintPosition(const QRect& item, QSize hint, const QRect& screen);

} // namespace keldra
