#include "ui_kit/HintWindow.h"

#include "ui_kit/PanelShape.h"
#include "ui_kit/RegisteredWindow.h"
#include "ui_kit/UiKit.h"
#include "ui_kit/X11WindowManagement.h"

#include <QQuickView>
#include <QScreen>

#include <algorithm>

namespace keldra {
namespace {

constexpr int gap = 8;

} // namespace

QPoint hintPosition(const QRect& item, QSize hint, const QRect& screen) {
    const int most = screen.x() + screen.width() - hint.width();
    const int x = std::max(screen.x(), std::min(item.x() + (item.width() - hint.width()) / 2, most));
    const int above = item.y() - gap - hint.height();
    return {x, above >= screen.y() ? above : item.y() + item.height() + gap};
}

HintWindow::HintWindow(UiKit& kit) : m_kit(kit) {}

HintWindow::~HintWindow() = default;

void HintWindow::load() {
    if (m_view)
        return;
    m_view = std::make_unique<QQuickView>(&m_kit.engine(), nullptr);
    m_view->setFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput |
                     Qt::WindowDoesNotAcceptFocus);
    m_view->setColor(Qt::transparent);
    m_view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Keldra/UiKit/HintView.qml")));
    m_registration =
        std::make_unique<RegisteredWindow>(*m_view, m_kit.ownWindows(), QStringLiteral("hint"), SharingType::readOnly);
}

void HintWindow::show(QQuickItem* item, const QString& text) {
    if (!item || !item->window() || !item->window()->isVisible() || text.isEmpty())
        return;
    load();
    disconnect(m_leaving);
    QQuickItem* root = m_view->rootObject();
    if (!root)
        return;
    m_item = item;
    // Its window may leave without the pointer leaving it.
    m_leaving = connect(item->window(), &QWindow::visibleChanged, m_view.get(), [this] { m_view->hide(); });
    root->setProperty("text", text);
    place();
    m_view->show();
    // Not before: Qt makes another native window of it for its first showing.
    if (!m_kit.theme().isTranslucent())
        cutToShape(*m_view, shapeRegion({{QRectF(QPointF(), m_view->size()), root->property("radius").toDouble()}},
                                        m_view->devicePixelRatio()));
    m_view->raise();
}

void HintWindow::place() {
    const QQuickItem* root = m_view->rootObject();
    const QSize size = QSizeF(root->implicitWidth(), root->implicitHeight()).toSize();
    const QPointF corner = m_item->mapToGlobal(QPointF(0, 0));
    const QRect item(corner.toPoint(), m_item->size().toSize());
    // Where only popups can be placed, it is one of that window.
    m_view->setTransientParent(m_item->window());
    m_view->setScreen(m_item->window()->screen());
    m_view->setGeometry({hintPosition(item, size, m_item->window()->screen()->availableGeometry()), size});
    m_view->setColor(m_kit.theme().isTranslucent() ? QColor(Qt::transparent) : m_kit.theme().menuGround());
}

void HintWindow::hide(QQuickItem* item) {
    if (!m_view || (m_item && m_item != item))
        return;
    disconnect(m_leaving);
    m_view->hide();
}

} // namespace keldra
