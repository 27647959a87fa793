#include "composition/GradientFill.h"

#include "imaging/Kernel.h"
#include "project/Clean.h"

#include <cmath>

namespace keldra {
namespace {

constexpr double maximumCenterSize = 0.95;
constexpr double pi = 3.14159265358979323846;

/// Blue, green, red, alpha from 0 to 255, premultiplied.
struct Components {
    float values[4];

    explicit Components(const RGBAColor& stored) {
        const RGBAColor color = cleaned(stored);
        const double alpha = color.alpha * 255;
        values[0] = float(color.blue * alpha);
        values[1] = float(color.green * alpha);
        values[2] = float(color.red * alpha);
        values[3] = float(alpha);
    }
};

/// Progress along the gradient at one row's pixels: 0 is the start colour, 1 the end colour.
KELDRA_ROW_KERNEL void linearProgress(float* progress, double first, double step, int width) {
    for (int x = 0; x < width; ++x)
        progress[x] = float(first + step * x);
}

KELDRA_ROW_KERNEL void mixRow(std::uint8_t* __restrict row, const float* __restrict progress, const float* start,
                              const float* end, int width) {
    const float base[4] = {start[0] + 0.5f, start[1] + 0.5f, start[2] + 0.5f, start[3] + 0.5f};
    const float span[4] = {end[0] - start[0], end[1] - start[1], end[2] - start[2], end[3] - start[3]};
    for (int x = 0; x < width; ++x) {
        const float raised = progress[x] < 0 ? 0 : progress[x];
        const float at = raised > 1 ? 1 : raised;
        for (int channel = 0; channel < 4; ++channel)
            row[4 * x + channel] = std::uint8_t(int(base[channel] + span[channel] * at));
    }
}

class LinearGradient {
public:
    LinearGradient(double angleDegrees, int width, int height) {
        const double angle = angleDegrees * pi / 180;
        // Angles count with y up.
        const double alongX = std::cos(angle);
        const double alongY = -std::sin(angle);
        const double length = std::abs(alongX * width) + std::abs(alongY * height);
        m_stepX = alongX / length;
        m_stepY = alongY / length;
        m_first = 0.5 - m_stepX * (width * 0.5 - 0.5) - m_stepY * (height * 0.5 - 0.5);
    }
    void progressOfRow(int y, float* progress, int width) const {
        linearProgress(progress, m_first + m_stepY * y, m_stepX, width);
    }

private:
    double m_stepX;
    double m_stepY;
    double m_first;
};

class RadialGradient {
public:
    RadialGradient(double centerSize, int width, int height)
        : m_centerX(width * 0.5 - 0.5)
        , m_centerY(height * 0.5 - 0.5)
        , m_outer(std::hypot(width * 0.5, height * 0.5))
        , m_inner(finiteWithin(centerSize, 0, maximumCenterSize) * m_outer) {}
    void progressOfRow(int y, float* progress, int width) const {
        const double down = (y - m_centerY) * (y - m_centerY);
        const double scale = 1 / (m_outer - m_inner);
        for (int x = 0; x < width; ++x) {
            const double across = x - m_centerX;
            progress[x] = float((std::sqrt(across * across + down) - m_inner) * scale);
        }
    }

private:
    double m_centerX;
    double m_centerY;
    double m_outer;
    double m_inner;
};

template <typename Shape>
void fill(PixelBuffer& target, const CanvasGradient& gradient, const Shape& shape) {
    const Components start(gradient.startColor);
    const Components end(gradient.endColor);
    std::vector<float> progress(std::size_t(target.width()));
    for (int y = 0; y < target.height(); ++y) {
        shape.progressOfRow(y, progress.data(), target.width());
        mixRow(target.mutableRow(0, y), progress.data(), start.values, end.values, target.width());
    }
}

} // namespace

PremultipliedColor premultiplied(const RGBAColor& color) {
    const Components components(color);
    const auto byte = [&](int channel) { return std::uint8_t(components.values[channel] + 0.5f); };
    return {byte(0), byte(1), byte(2), byte(3)};
}

void fillGradient(PixelBuffer& target, const CanvasGradient& gradient) {
    if (gradient.kind == CanvasGradient::Kind::radial)
        return fill(target, gradient, RadialGradient(gradient.centerSize, target.width(), target.height()));
    if (std::isfinite(gradient.angleDegrees))
        return fill(target, gradient, LinearGradient(gradient.angleDegrees, target.width(), target.height()));
    for (int y = 0; y < target.height(); ++y)
        fillRow(target.mutableRow(0, y), premultiplied(gradient.startColor), target.width());
}

} // namespace keldra
