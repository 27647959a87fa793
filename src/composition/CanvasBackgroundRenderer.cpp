#include "composition/CanvasBackgroundRenderer.h"

#include "composition/GradientFill.h"
#include "composition/Transforms.h"
#include "imaging/Blur.h"
#include "imaging/Coverage.h"
#include "imaging/Resample.h"
#include "project/CanvasGeometry.h"

#include <QHash>
#include <QImageReader>

#include <cmath>
#include <mutex>
#include <optional>

namespace keldra::CanvasBackgroundRenderer {
namespace {

struct ImageCache {
    std::mutex lock;
    QHash<QUrl, QImage> entries;
};

ImageCache& imageCache() {
    static ImageCache cache;
    return cache;
}

PixelBuffer filled(PremultipliedColor color, const QSize& size) {
    PixelBuffer buffer = PixelBuffer::allocate(PixelFormat::bgra, size.width(), size.height());
    for (int y = 0; y < size.height(); ++y)
        fillRow(buffer.mutableRow(0, y), color, size.width());
    return buffer;
}

/// The picture's own pixels, shared.
PixelBuffer sharedPixels(const QImage& image) {
    auto owner = std::make_shared<const QImage>(image);
    PixelBuffer::Planes planes;
    // Nothing writes to a buffer that was handed on.
    planes[0] = {const_cast<std::uint8_t*>(owner->constBits()), owner->bytesPerLine()};
    return PixelBuffer::wrap(PixelFormat::bgra, image.width(), image.height(), planes, owner);
}

/// Gives the rows of the placed picture, sharp or blurred, over the columns of `part`.
class PictureRows {
public:
    PictureRows(const QImage& picture, const QRectF& drawRect, double blurRadius, const PixelRect& part)
        : m_part(part)
        , m_isBlurred(blurRadius > 0)
        , m_grid(m_isBlurred ? blurRadius : 0)
        , m_row(std::size_t(part.width) * 4) {
        const Placement placement{drawRect.width() / picture.width(), drawRect.height() / picture.height(),
                                  drawRect.x(), drawRect.y()};
        if (m_isBlurred)
            blur(picture, placement, drawRect);
        else
            m_resampler.begin(sharedPixels(picture), placement, part.x, part.width);
    }

    const std::uint8_t* row(int y) {
        if (!m_isBlurred)
            return m_resampler.row(y);
        m_expander->writeRow(y - m_originY, m_row.data());
        return m_row.data();
    }

private:
    /// Draws the picture straight onto the coarse grid, as far as its blur reaches into view, and blurs it there. The
    /// grid starts and ends with the picture's own edges, which repeat.
    void blur(const QImage& picture, const Placement& placement, const QRectF& drawRect) {
        const int cell = m_grid.cell;
        const auto firstCell = [&](double pictureEdge, int visibleEdge) {
            return int(std::floor(std::max(pictureEdge / cell, double(visibleEdge) / cell - m_grid.reach)));
        };
        const auto endCell = [&](double pictureEdge, int visibleEdge) {
            return int(std::ceil(std::min(pictureEdge / cell, double(visibleEdge) / cell + m_grid.reach)));
        };
        const int left = firstCell(drawRect.left(), m_part.x);
        const int top = firstCell(drawRect.top(), m_part.y);
        const int width = std::max(endCell(drawRect.right(), m_part.right()) - left, 1);
        const int height = std::max(endCell(drawRect.bottom(), m_part.bottom()) - top, 1);
        m_originY = top * cell;
        m_cells = FloatPlane(width, height, 4);
        m_resampler.begin(
            sharedPixels(picture),
            {placement.scaleX / cell, placement.scaleY / cell, placement.offsetX / cell, placement.offsetY / cell},
            left, width);
        for (int y = 0; y < height; ++y)
            std::copy_n(m_resampler.row(top + y), m_cells.rowLength(), m_cells.row(y));
        blurGaussian(m_cells, m_grid.sigma);
        m_expander.emplace(m_cells, cell, m_part.x - left * cell, m_part.width, 1);
    }

    PixelRect m_part;
    bool m_isBlurred;
    BlurGrid m_grid;
    FloatPlane m_cells{0, 0, 4};
    std::optional<CellExpander> m_expander;
    int m_originY = 0;
    RowResampler m_resampler;
    std::vector<std::uint8_t> m_row;
};

PixelBuffer pictureBackground(const CanvasImageBackground& background, const QSize& size, const QImage& picture) {
    PixelBuffer canvas = filled(premultiplied(background.fallbackColor), size);
    if (picture.isNull())
        return canvas;
    const QRectF drawRect = imageRect(picture.size(), QRectF(QPointF(), size), background.fit);
    const Coverage coverage(toEdges(drawRect), nullptr, {0, 0, size.width(), size.height()});
    if (coverage.isEmpty())
        return canvas;
    const PixelRect part = coverage.bounds();
    const double blurRadius = std::isfinite(background.blurRadius) ? background.blurRadius : 0;
    PictureRows rows(picture, drawRect, blurRadius, part);
    for (int y = part.y; y < part.bottom(); ++y)
        blendRowCovered(canvas.mutableRow(0, y) + std::ptrdiff_t(part.x) * 4, rows.row(y), coverage.row(y), part.width);
    return canvas;
}

struct Painter {
    const QSize& size;
    const QImage& picture;

    PixelBuffer operator()(const RGBAColor& color) const { return filled(premultiplied(color), size); }
    PixelBuffer operator()(const CanvasGradient& gradient) const {
        PixelBuffer buffer = PixelBuffer::allocate(PixelFormat::bgra, size.width(), size.height());
        fillGradient(buffer, gradient);
        return buffer;
    }
    PixelBuffer operator()(const CanvasImageBackground& background) const {
        return pictureBackground(background, size, picture);
    }
};

} // namespace

PixelBuffer backgroundImage(const CanvasBackground& background, const QSize& size) {
    const auto* image = std::get_if<CanvasImageBackground>(&background);
    return backgroundImage(background, size, image ? cachedImage(image->url) : QImage());
}

PixelBuffer backgroundImage(const CanvasBackground& background, const QSize& size, const QImage& picture) {
    return std::visit(Painter{size, picture}, background);
}

QImage cachedImage(const QUrl& url) {
    ImageCache& cache = imageCache();
    const std::lock_guard guard(cache.lock);
    if (const auto found = cache.entries.constFind(url); found != cache.entries.constEnd())
        return *found;
    // The largest cameras' pictures; the default limit refuses photographs of 34 megapixels.
    constexpr int mostMegabytes = 1024;
    QImageReader::setAllocationLimit(mostMegabytes);
    QImageReader reader(url.toLocalFile());
    reader.setAutoTransform(true);
    const QImage picture = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (!picture.isNull())
        cache.entries.insert(url, picture);
    return picture;
}

} // namespace keldra::CanvasBackgroundRenderer
