#include "project/CanvasGeometry.h"

#include "project/Clean.h"

namespace keldra {
namespace {

constexpr double maximumDimension = 7680;
constexpr double maximumPadding = 0.4;

bool hasArea(const QSizeF& size) {
    return isPositiveFinite(size.width()) && isPositiveFinite(size.height());
}

double usableInset(double inset) {
    return isPositiveFinite(inset) ? inset : 0;
}

double scaleInto(const QSizeF& source, const QSizeF& available, ContentFit fit) {
    const double horizontal = available.width() / source.width();
    const double vertical = available.height() / source.height();
    return fit == ContentFit::fit ? std::min(horizontal, vertical) : std::max(horizontal, vertical);
}

struct WantedSize {
    const EditorProject& project;

    QSizeF operator()(CanvasPreset preset) const { return presetSize(preset); }
    QSizeF operator()(const CanvasCustomSize& size) const { return {double(size.width), double(size.height)}; }
    QSizeF operator()(CanvasOriginalSize) const { return {project.canvasWidth, project.canvasHeight}; }
};

} // namespace

int evenDimension(double pixels) {
    if (!std::isfinite(pixels))
        return 2;
    const int whole = int(std::clamp(std::floor(pixels), 2.0, maximumDimension));
    return whole - whole % 2;
}

QSize renderSize(const EditorProject& project) {
    const CanvasSizeSpec chosen = project.canvas ? project.canvas->size : CanvasStyle{}.size;
    const QSizeF wanted = std::visit(WantedSize{project}, chosen);
    return {evenDimension(wanted.width()), evenDimension(wanted.height())};
}

QMarginsF paddingPixels(const CanvasInsets& fractions, const QSizeF& canvas) {
    if (!hasArea(canvas))
        return {};
    const double smaller = std::min(canvas.width(), canvas.height());
    const auto pixels = [smaller](double fraction) { return finiteWithin(fraction, 0, maximumPadding) * smaller; };
    return {pixels(fractions.left), pixels(fractions.top), pixels(fractions.right), pixels(fractions.bottom)};
}

QRectF videoRect(const QSizeF& source, const QSizeF& canvas, const QMarginsF& insets, ContentFit fit) {
    if (!hasArea(source) || !hasArea(canvas))
        return {};
    const double left = usableInset(insets.left());
    const double top = usableInset(insets.top());
    const QSizeF available(canvas.width() - left - usableInset(insets.right()),
                           canvas.height() - top - usableInset(insets.bottom()));
    if (!hasArea(available))
        return {};
    const double scale = scaleInto(source, available, fit);
    const QSizeF size = source * scale;
    if (!isPositiveFinite(scale) || !hasArea(size))
        return {};
    return {left + (available.width() - size.width()) * 0.5, top + (available.height() - size.height()) * 0.5,
            size.width(), size.height()};
}

double cornerRadiusPixels(double fraction, const QRectF& videoRect) {
    const double smaller = std::min(videoRect.width(), videoRect.height());
    return std::min(fraction * smaller, smaller * 0.5);
}

std::optional<ShadowGeometry> shadowGeometry(const CanvasShadow& shadow, const QRectF& videoRect,
                                             const QRectF& canvas) {
    if (!shadow.isEnabled || !hasArea(videoRect.size()) || !hasArea(canvas.size()))
        return std::nullopt;
    const double smaller = std::min(canvas.width(), canvas.height());
    const double blurFraction = std::isfinite(shadow.blurRadius) ? std::max(shadow.blurRadius, 0.0) : 0;
    const double offsetFraction = std::isfinite(shadow.offsetY) ? shadow.offsetY : 0;
    return ShadowGeometry{videoRect.translated(0, smaller * offsetFraction), smaller * blurFraction,
                          finiteWithin(shadow.opacity, 0, 1)};
}

QRectF imageRect(const QSizeF& image, const QRectF& canvas, ContentFit fit) {
    if (!hasArea(image) || !hasArea(canvas.size()))
        return {};
    const QSizeF size = image * scaleInto(image, canvas.size(), fit);
    QRectF rect({0, 0}, size);
    rect.moveCenter(canvas.center());
    return rect;
}

} // namespace keldra
