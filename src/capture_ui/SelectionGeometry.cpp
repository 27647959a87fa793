#include "capture_ui/SelectionGeometry.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

constexpr double leastLabelledWidth = 64;
constexpr double leastLabelledHeight = 40;
constexpr double labelPadding = 16;
constexpr double labelHeight = 22;
/// Between a label and what it belongs to, and the edge of the desktop.
constexpr double gap = 8;

constexpr double instructionPadding = 28;
constexpr double instructionHeight = 46;

constexpr double namePadding = 40;
constexpr double nameHeight = 38;
constexpr double nameBelowInstruction = 18;

} // namespace

QString sizeLabelText(const QRectF& selected) {
    return QStringLiteral("%1 x %2").arg(std::lround(selected.width())).arg(std::lround(selected.height()));
}

std::optional<QRectF> sizeLabelPill(const QRectF& selected, double textWidth, const QRectF& bounds) {
    if (selected.width() < leastLabelledWidth || selected.height() < leastLabelledHeight)
        return std::nullopt;
    const double width = std::ceil(textWidth) + labelPadding;
    const double rightmost = bounds.x() + bounds.width() - gap - width;
    const double x = std::max(bounds.x() + gap, std::min(selected.center().x() - width / 2, rightmost));
    const double below = selected.y() - gap - labelHeight;
    const double y = below >= bounds.y() + gap ? below : std::max(selected.y(), bounds.y()) + gap;
    return QRectF(x, y, width, labelHeight);
}

QRectF instructionPill(const QRectF& screen, double firstLineWidth, double secondLineWidth) {
    const double width = std::max(firstLineWidth, secondLineWidth) + instructionPadding;
    return {screen.center().x() - width / 2, screen.center().y() - instructionHeight / 2, width, instructionHeight};
}

QRectF displayNamePill(const QRectF& screen, double textWidth) {
    const double width = std::min(textWidth + namePadding, screen.width());
    const double y = screen.center().y() - instructionHeight / 2 - nameBelowInstruction - nameHeight;
    return {screen.center().x() - width / 2, y, width, nameHeight};
}

} // namespace keldra
