#pragma once

#include "project/CanvasBackground.h"
#include "project/CanvasSize.h"
#include "project/EditorSegment.h"
#include "project/EditorTrack.h"

#include <utility>

namespace keldra {

/// The string that stands for each enumerator in a file.
template <typename E>
struct JsonNames;

template <>
struct JsonNames<ContentFit> {
    static constexpr std::pair<ContentFit, const char*> names[] = {{ContentFit::fit, "fit"},
                                                                   {ContentFit::fill, "fill"}};
};

template <>
struct JsonNames<CanvasGradient::Kind> {
    static constexpr std::pair<CanvasGradient::Kind, const char*> names[] = {{CanvasGradient::Kind::linear, "linear"},
                                                                             {CanvasGradient::Kind::radial, "radial"}};
};

template <>
struct JsonNames<CanvasPreset> {
    static constexpr std::pair<CanvasPreset, const char*> names[] = {{CanvasPreset::landscape16x9, "landscape16x9"},
                                                                     {CanvasPreset::portrait9x16, "portrait9x16"},
                                                                     {CanvasPreset::square1x1, "square1x1"},
                                                                     {CanvasPreset::portrait4x5, "portrait4x5"}};
};

template <>
struct JsonNames<EditorTrackKind> {
    static constexpr std::pair<EditorTrackKind, const char*> names[] = {{EditorTrackKind::video, "video"},
                                                                        {EditorTrackKind::audio, "audio"}};
};

template <>
struct JsonNames<EditorMediaKind> {
    static constexpr std::pair<EditorMediaKind, const char*> names[] = {
        {EditorMediaKind::video, "video"}, {EditorMediaKind::image, "image"}, {EditorMediaKind::audio, "audio"}};
};

/// The one key of an enumeration with payload, in the order of its variant. A case with a positional payload holds it
/// under "_0"; one with named fields is the object itself.
template <typename V>
struct JsonCases;

template <>
struct JsonCases<CanvasBackground> {
    static constexpr const char* keys[] = {"color", "gradient", "image"};
};

template <>
struct JsonCases<CanvasSizeSpec> {
    static constexpr const char* keys[] = {"preset", "custom", "original"};
};

template <typename T>
constexpr bool payloadHasNames = false;
template <>
inline constexpr bool payloadHasNames<CanvasCustomSize> = true;
template <>
inline constexpr bool payloadHasNames<CanvasOriginalSize> = true;

constexpr char payloadKey[] = "_0";

} // namespace keldra
