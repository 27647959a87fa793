#pragma once

#include "project/EditorProject.h"

#include <QDateTime>

#include <random>

namespace keldra {

/// Projects as editing makes them, and worse: overlapping clips, rows missing or doubled, fields set or not. The seed
/// is for the failure message.
class RandomProject {
public:
    explicit RandomProject(unsigned seed) : m_random(seed) {}

    EditorProject make(int clips) {
        EditorProject project;
        project.id = QUuid::createUuid();
        project.sourceURL = QUrl::fromLocalFile("/movies/source.mov");
        project.createdAt = project.updatedAt = QDateTime::fromSecsSinceEpoch(whole(0, 2'000'000'000), Qt::UTC);
        project.frameRate = pick({30, 59.94, 60, 24, 1, 0.5});
        project.sourceDuration = real(0, 7200);
        project.canvasWidth = whole(2, 7680);
        project.canvasHeight = whole(2, 4320);
        for (int i = 0; i < clips; ++i)
            project.segments.append(segment());
        if (chance())
            project.tracks = tracks();
        if (chance())
            project.canvas = style();
        if (chance())
            project.zoomBlocks = zoomBlocks();
        if (chance())
            project.hasLiveClickTrack = chance();
        if (chance())
            project.clickSoundVolume = real(0, 2);
        return project;
    }

    EditorSegment segment() {
        EditorSegment clip;
        clip.id = QUuid::createUuid();
        clip.sourceStart = real(0, 100);
        clip.duration = real(0, 20);
        clip.timelineStart = real(0, 200);
        clip.trackIndex = whole(0, 5);
        if (chance())
            clip.fadeInDuration = real(0, 10);
        if (chance())
            clip.fadeOutDuration = real(0, 10);
        if (chance())
            clip.volume = real(0, 2);
        if (chance())
            clip.isMuted = chance();
        if (chance())
            clip.opacity = real(0, 1);
        if (chance())
            clip.displayName = QStringLiteral("Clip \u00e9 \"%1\"").arg(whole(0, 9));
        return clip;
    }

    CanvasStyle style() {
        CanvasStyle canvas;
        canvas.paddingFraction = {real(0, 0.4), real(0, 0.4), real(0, 0.4), real(0, 0.4)};
        canvas.videoFit = chance() ? ContentFit::fit : ContentFit::fill;
        if (chance())
            canvas.background = gradientPresets().at(whole(0, int(gradientPresets().size()) - 1)).gradient;
        if (chance())
            canvas.size = CanvasCustomSize{whole(1, 9000), whole(1, 9000)};
        if (chance())
            canvas.cornerRadiusFraction = real(0, 0.5);
        return canvas;
    }

    QList<ZoomBlock> zoomBlocks() {
        QList<ZoomBlock> blocks;
        for (int i = whole(0, 3); i > 0; --i)
            blocks.append({QUuid::createUuid(), real(0, 200), real(0.2, 5), real(1, 5), {real(0, 1), real(0, 1)}, 0.6});
        return blocks;
    }

    double real(double low, double high) { return std::uniform_real_distribution<>(low, high)(m_random); }
    int whole(int low, int high) { return std::uniform_int_distribution<>(low, high)(m_random); }
    bool chance() { return whole(0, 1) == 1; }

private:
    QList<EditorTrack> tracks() {
        QList<EditorTrack> rows;
        for (int i = whole(0, 4); i > 0; --i)
            rows.append({QUuid::createUuid(), whole(0, 4), EditorTrackKind::video, chance()});
        return rows;
    }
    double pick(std::initializer_list<double> values) { return *(values.begin() + whole(0, int(values.size()) - 1)); }

    std::mt19937 m_random;
};

} // namespace keldra
