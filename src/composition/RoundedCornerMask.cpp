#include "composition/RoundedCornerMask.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

namespace keldra::RoundedCornerMask {
namespace {

/// The painter's own limit of a side.
constexpr int maximumSide = 32767;

std::shared_ptr<const GreyPlane> drawnMask(int width, int height, double radius) {
    if (width < 1 || height < 1 || width > maximumSide || height > maximumSide)
        return nullptr;
    QImage image(width, height, QImage::Format_Grayscale8);
    if (image.isNull())
        return nullptr;
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    path.addRoundedRect(QRectF(0, 0, width, height), radius, radius);
    path.setFillRule(Qt::WindingFill);
    painter.fillPath(path, Qt::white);
    painter.end();

    auto plane = std::make_shared<GreyPlane>(PixelRect{0, 0, width, height});
    for (int y = 0; y < height; ++y)
        std::copy_n(image.constScanLine(y), width, plane->mutableRow(y));
    return plane;
}

struct MaskCache {
    using Key = std::tuple<int, int, int>;

    std::mutex lock;
    std::map<Key, std::shared_ptr<const GreyPlane>> masks;
};

MaskCache& maskCache() {
    static MaskCache cache;
    return cache;
}

} // namespace

std::optional<Placed> maskImage(const QRectF& rect, double radius) {
    if (!(radius > 0) || !(rect.width() >= 1) || !(rect.height() >= 1))
        return std::nullopt;
    if (!(rect.width() <= maximumSide) || !(rect.height() <= maximumSide))
        return std::nullopt;
    const int height = int(std::lround(rect.height()));
    auto plane = cachedMask(int(std::lround(rect.width())), height, radius);
    if (!plane)
        return std::nullopt;
    return Placed{std::move(plane), rect.left(), rect.bottom() - height};
}

std::shared_ptr<const GreyPlane> cachedMask(int width, int height, double radius) {
    MaskCache& cache = maskCache();
    const MaskCache::Key key{width, height, int(std::lround(radius))};
    const std::lock_guard guard(cache.lock);
    if (const auto found = cache.masks.find(key); found != cache.masks.end())
        return found->second;
    auto mask = drawnMask(width, height, radius);
    if (!mask)
        return nullptr;
    if (cache.masks.size() >= maximumCount)
        cache.masks.clear();
    cache.masks.emplace(key, mask);
    return mask;
}

std::size_t cachedCount() {
    MaskCache& cache = maskCache();
    const std::lock_guard guard(cache.lock);
    return cache.masks.size();
}

} // namespace keldra::RoundedCornerMask
