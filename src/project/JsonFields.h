#pragma once

#include "project/EditorProject.h"

namespace keldra {

/// The keys of a record, told once: JsonReader and JsonWriter both walk them, so what is written can be read.
/// required() fails when the key is missing, optional() stands for a std::optional, defaulted() keeps the record's own
/// default when the key is missing and is always written. No key may ever be renamed: old files must load.
template <typename R>
struct JsonFields;

template <>
struct JsonFields<RGBAColor> {
    static void walk(auto& archive, auto& color) {
        archive.required("red", color.red);
        archive.required("green", color.green);
        archive.required("blue", color.blue);
        archive.required("alpha", color.alpha);
    }
};

template <>
struct JsonFields<CanvasGradient> {
    static void walk(auto& archive, auto& gradient) {
        archive.required("kind", gradient.kind);
        archive.required("startColor", gradient.startColor);
        archive.required("endColor", gradient.endColor);
        archive.required("angleDegrees", gradient.angleDegrees);
        archive.defaulted("centerSize", gradient.centerSize);
    }
};

template <>
struct JsonFields<CanvasImageBackground> {
    static void walk(auto& archive, auto& image) {
        archive.required("url", image.url);
        archive.required("fit", image.fit);
        archive.required("blurRadius", image.blurRadius);
        archive.required("fallbackColor", image.fallbackColor);
    }
};

template <>
struct JsonFields<CanvasCustomSize> {
    static void walk(auto& archive, auto& size) {
        archive.required("width", size.width);
        archive.required("height", size.height);
    }
};

template <>
struct JsonFields<CanvasOriginalSize> {
    static void walk(auto&, auto&) {}
};

template <>
struct JsonFields<CanvasInsets> {
    static void walk(auto& archive, auto& insets) {
        archive.required("top", insets.top);
        archive.required("left", insets.left);
        archive.required("bottom", insets.bottom);
        archive.required("right", insets.right);
    }
};

template <>
struct JsonFields<CanvasShadow> {
    static void walk(auto& archive, auto& shadow) {
        archive.required("isEnabled", shadow.isEnabled);
        archive.required("color", shadow.color);
        archive.required("opacity", shadow.opacity);
        archive.required("blurRadius", shadow.blurRadius);
        archive.required("offsetY", shadow.offsetY);
    }
};

template <>
struct JsonFields<CanvasStyle> {
    static void walk(auto& archive, auto& style) {
        archive.defaulted("background", style.background);
        archive.defaulted("paddingFraction", style.paddingFraction);
        archive.defaulted("videoFit", style.videoFit);
        archive.defaulted("size", style.size);
        archive.optional("shadow", style.shadow);
        archive.optional("cornerRadiusFraction", style.cornerRadiusFraction);
    }
};

template <>
struct JsonFields<ZoomFocus> {
    static void walk(auto& archive, auto& focus) {
        archive.required("x", focus.x);
        archive.required("y", focus.y);
    }
};

template <>
struct JsonFields<ZoomBlock> {
    static void walk(auto& archive, auto& block) {
        archive.required("id", block.id);
        archive.required("timelineStart", block.timelineStart);
        archive.required("duration", block.duration);
        archive.required("scale", block.scale);
        archive.required("focus", block.focus);
        archive.required("rampDuration", block.rampDuration);
    }
};

template <>
struct JsonFields<EditorTrack> {
    static void walk(auto& archive, auto& row) {
        archive.required("id", row.id);
        archive.required("index", row.index);
        archive.required("kind", row.kind);
        archive.required("isMuted", row.isMuted);
    }
};

template <>
struct JsonFields<EditorSegment> {
    static void walk(auto& archive, auto& segment) {
        archive.required("id", segment.id);
        archive.required("sourceStart", segment.sourceStart);
        archive.required("duration", segment.duration);
        archive.required("timelineStart", segment.timelineStart);
        archive.required("trackIndex", segment.trackIndex);
        archive.optional("sourceURL", segment.sourceURL);
        archive.optional("sourceDuration", segment.sourceDuration);
        archive.optional("mediaKind", segment.mediaKind);
        archive.optional("displayName", segment.displayName);
        archive.optional("positionX", segment.positionX);
        archive.optional("positionY", segment.positionY);
        archive.optional("scale", segment.scale);
        archive.optional("rotationDegrees", segment.rotationDegrees);
        archive.optional("opacity", segment.opacity);
        archive.optional("fadeInDuration", segment.fadeInDuration);
        archive.optional("fadeOutDuration", segment.fadeOutDuration);
        archive.optional("volume", segment.volume);
        archive.optional("isMuted", segment.isMuted);
    }
};

template <>
struct JsonFields<EditorProject> {
    static void walk(auto& archive, auto& project) {
        archive.required("id", project.id);
        archive.required("sourceURL", project.sourceURL);
        archive.required("createdAt", project.createdAt);
        archive.required("updatedAt", project.updatedAt);
        archive.required("frameRate", project.frameRate);
        archive.required("sourceDuration", project.sourceDuration);
        archive.required("canvasWidth", project.canvasWidth);
        archive.required("canvasHeight", project.canvasHeight);
        archive.required("segments", project.segments);
        archive.optional("tracks", project.tracks);
        archive.optional("canvas", project.canvas);
        archive.optional("zoomBlocks", project.zoomBlocks);
        archive.optional("hasLiveClickTrack", project.hasLiveClickTrack);
        archive.optional("clickSoundVolume", project.clickSoundVolume);
    }
};

} // namespace keldra
