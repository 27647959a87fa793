#include "project/ZoomEvaluation.h"

#include "project/Clean.h"

namespace keldra {
namespace {

constexpr double maximumScale = 5;

double usableScale(double scale) {
    return finiteWithin(scale, 1, maximumScale, 1);
}

ZoomFocus usableFocus(const ZoomFocus& focus) {
    return {finiteWithin(focus.x, 0, 1, 0.5), finiteWithin(focus.y, 0, 1, 0.5)};
}

double usableRamp(const ZoomBlock& block) {
    return isPositiveFinite(block.rampDuration) ? std::min(block.rampDuration, block.duration * 0.5) : 0;
}

double blockEnd(const ZoomBlock& block) {
    return block.timelineStart + std::max(block.duration, 0.0);
}

double smoothstep(double progress) {
    const double p = finiteWithin(progress, 0, 1);
    return p * p * (3 - 2 * p);
}

double rampProgress(const ZoomBlock& block, double ramp, double time) {
    const double elapsed = time - block.timelineStart;
    if (elapsed < ramp)
        return elapsed / ramp;
    const double remaining = block.timelineStart + block.duration - time;
    return remaining < ramp ? remaining / ramp : 1;
}

} // namespace

ZoomState zoomState(const QList<ZoomBlock>& blocks, double time) {
    if (!std::isfinite(time))
        return {};
    for (const ZoomBlock& block : blocks) {
        if (!(block.timelineStart <= time && time < blockEnd(block)))
            continue;
        const double full = usableScale(block.scale);
        const ZoomFocus focus = usableFocus(block.focus);
        const double ramp = usableRamp(block);
        if (!(ramp > 0))
            return {full, focus};
        return {(full - 1) * smoothstep(rampProgress(block, ramp, time)) + 1, focus};
    }
    return {};
}

bool zoomRampActive(const QList<ZoomBlock>& blocks, double start, double end) {
    for (const ZoomBlock& block : blocks) {
        if (!std::isfinite(block.scale) || block.scale <= 1)
            continue;
        const auto touches = [&](double from, double to) { return to >= start && from <= end; };
        const double ramp = usableRamp(block);
        if (touches(block.timelineStart, block.timelineStart + ramp) ||
            touches(blockEnd(block) - ramp, blockEnd(block)))
            return true;
    }
    return false;
}

QTransform zoomTransform(double scale, const ZoomFocus& focus, const QRectF& rect) {
    if (!(scale > zoomThreshold) || !(rect.width() > 0) || !(rect.height() > 0))
        return {};
    const ZoomFocus point = usableFocus(focus);
    const double centreX = rect.left() + point.x * rect.width();
    const double centreY = rect.top() + point.y * rect.height();
    return QTransform::fromTranslate(-centreX, -centreY) * QTransform::fromScale(scale, scale) *
           QTransform::fromTranslate(centreX, centreY);
}

} // namespace keldra
