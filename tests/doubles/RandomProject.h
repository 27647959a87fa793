#pragma once

#include "project/EditorProject.h"

#include <QDateTime>

#include <random>

namespace keldra {

/// Projects as editing makes them, and worse: overlapping clips, rows missing or doubled, every field set or not. The
/// seed is for the failure message.
class RandomProject {
public:
    explicit RandomProject(unsigned seed) : m_random(seed) {}
    virtual ~RandomProject() = default;

    EditorProject make(int clips) {
        EditorProject project;
        project.id = QUuid::createUuid();
        project.sourceURL = QUrl::fromLocalFile("/movies/source.mov");
        project.createdAt = project.updatedAt = QDateTime::fromSecsSinceEpoch(below(2'000'000'000), Qt::UTC);
        const double rates[] = {30, 59.94, 60, 24, 1, 0.5};
        project.frameRate = rates[below(6)];
        project.sourceDuration = real(0, 7200);
        project.canvasWidth = double(whole(2, 7680));
        project.canvasHeight = double(whole(2, 4320));
        for (int i = 0; i < clips; ++i)
            project.segments.append(segment());
        maybe(project.tracks, tracks());
        maybe(project.canvas, style());
        maybe(project.zoomBlocks, zoomBlocks());
        maybe(project.hasLiveClickTrack, chance());
        maybe(project.clickSoundVolume, real(0, 2));
        return project;
    }

    EditorSegment segment() {
        EditorSegment clip;
        clip.id = QUuid::createUuid();
        clip.sourceStart = real(0, 100);
        clip.duration = real(0, 20);
        clip.timelineStart = real(0, 200);
        clip.trackIndex = whole(0, 5);
        maybe(clip.sourceURL, url());
        maybe(clip.sourceDuration, real(0, 7200));
        maybe(clip.mediaKind, EditorMediaKind(below(3)));
        for (auto* field : {&clip.positionX, &clip.positionY, &clip.scale, &clip.rotationDegrees})
            maybe(*field, real(0, 2));
        maybe(clip.fadeInDuration, real(0, 10));
        maybe(clip.fadeOutDuration, real(0, 10));
        maybe(clip.volume, real(0, 2));
        maybe(clip.isMuted, chance());
        maybe(clip.opacity, real(0, 1));
        maybe(clip.displayName, QString("Clip \u00e9 \"\\\n\u0007\u2028%1").arg(below(9)) + QChar(0));
        return clip;
    }

    CanvasStyle style() {
        CanvasStyle canvas;
        const auto part = [this] { return real(0, 0.4); };
        canvas.paddingFraction = {part(), part(), part(), part()};
        canvas.videoFit = ContentFit(below(2));
        const CanvasGradient gradient{CanvasGradient::Kind(below(2)), color(), color(), real(0, 360), part()};
        const CanvasBackground backgrounds[] = {
            color(), gradient, CanvasImageBackground{url(), ContentFit(below(2)), real(0, 50), color()}};
        canvas.background = backgrounds[below(3)];
        const CanvasSizeSpec sizes[] = {CanvasOriginalSize{}, CanvasPreset(below(4)),
                                        CanvasCustomSize{whole(1, 9000), whole(1, 9000)}};
        canvas.size = sizes[below(3)];
        maybe(canvas.shadow, CanvasShadow{chance(), color(), real(0, 1), part(), part()});
        maybe(canvas.cornerRadiusFraction, real(0, 0.5));
        return canvas;
    }

    QList<ZoomBlock> zoomBlocks() {
        QList<ZoomBlock> blocks;
        for (int i = below(4); i > 0; --i)
            blocks.append({QUuid::createUuid(), real(0, 200), real(0.2, 5), real(1, 5), {real(0, 1), real(0, 1)}, 0.6});
        return blocks;
    }

    /// Every number and whole number of a project is one of these.
    virtual double real(double low, double high) { return std::uniform_real_distribution<>(low, high)(m_random); }
    virtual qint64 whole(qint64 low, qint64 high) { return low + below(int(high - low + 1)); }
    int below(int limit) { return std::uniform_int_distribution<>(0, limit - 1)(m_random); }
    bool chance() { return below(2) == 1; }

protected:
    std::mt19937_64 m_random;

private:
    template <typename T, typename Value>
    void maybe(std::optional<T>& field, Value value) {
        if (chance())
            field = std::move(value);
    }
    QList<EditorTrack> tracks() {
        QList<EditorTrack> rows;
        for (int i = below(5); i > 0; --i)
            rows.append({QUuid::createUuid(), whole(0, 4), EditorTrackKind(below(2)), chance()});
        return rows;
    }
    QUrl url() { return QUrl::fromLocalFile(QString("/m %1?#%\u00fc\u03b1.mov").arg(below(1000))); }
    RGBAColor color() { return {real(0, 1), real(0, 1), real(0, 1), real(0, 1)}; }
};

} // namespace keldra
