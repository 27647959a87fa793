#include "imaging/FrameFit.h"

#include <algorithm>
#include <cmath>

namespace keldra {

FrameFit fitInto(int width, int height, int frameWidth, int frameHeight) {
    const auto isCrop = [](int size, int frameSize) { return size == frameSize || size == frameSize + 1; };
    if (isCrop(width, frameWidth) && isCrop(height, frameHeight))
        return {{0, 0, frameWidth, frameHeight}, true};
    const double scale = std::min(double(frameWidth) / width, double(frameHeight) / height);
    const int fittedWidth = std::clamp(int(std::lround(width * scale)), 1, frameWidth);
    const int fittedHeight = std::clamp(int(std::lround(height * scale)), 1, frameHeight);
    return {{(frameWidth - fittedWidth) / 2, (frameHeight - fittedHeight) / 2, fittedWidth, fittedHeight}, false};
}

} // namespace keldra
