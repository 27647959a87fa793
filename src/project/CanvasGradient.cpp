#include "project/CanvasGradient.h"

#include <algorithm>

namespace keldra {
namespace {

struct Bytes {
    int red;
    int green;
    int blue;
};

struct Row {
    const char* id;
    const char* displayName;
    CanvasGradient::Kind kind;
    Bytes start;
    Bytes end;
};

constexpr auto linear = CanvasGradient::Kind::linear;
constexpr auto radial = CanvasGradient::Kind::radial;

constexpr Row rows[] = {
    {"midnight", "Midnight", linear, {30, 27, 75}, {15, 23, 42}},
    {"ocean", "Ocean", linear, {14, 165, 233}, {30, 58, 138}},
    {"sunset", "Sunset", linear, {249, 115, 22}, {190, 18, 60}},
    {"ember", "Ember", linear, {251, 113, 133}, {124, 45, 18}},
    {"forest", "Forest", linear, {52, 211, 153}, {6, 78, 59}},
    {"lavender", "Lavender", linear, {167, 139, 250}, {76, 29, 149}},
    {"peach", "Peach", linear, {253, 186, 116}, {236, 72, 153}},
    {"slate", "Slate", linear, {148, 163, 184}, {30, 41, 59}},
    {"mint", "Mint", linear, {110, 231, 183}, {15, 118, 110}},
    {"gold", "Gold", linear, {252, 211, 77}, {180, 83, 9}},
    {"berry", "Berry", linear, {232, 121, 249}, {107, 33, 168}},
    {"steel", "Steel", linear, {96, 165, 250}, {30, 41, 59}},
    {"coral", "Coral", linear, {252, 165, 165}, {159, 18, 57}},
    {"aurora", "Aurora", linear, {34, 211, 238}, {124, 58, 237}},
    {"sand", "Sand", linear, {253, 230, 138}, {146, 64, 14}},
    {"ink", "Ink", linear, {71, 85, 105}, {2, 6, 23}},
    {"spotlight", "Spotlight", radial, {71, 85, 105}, {15, 23, 42}},
    {"halo", "Halo", radial, {56, 189, 248}, {12, 74, 110}},
    {"glow", "Glow", radial, {253, 230, 138}, {124, 45, 18}},
    {"focus", "Focus", radial, {226, 232, 240}, {30, 27, 75}},
};

RGBAColor color(const Bytes& bytes) {
    return {bytes.red / 255.0, bytes.green / 255.0, bytes.blue / 255.0, 1};
}

QList<CanvasGradientPreset> makePresets() {
    constexpr double angleDegrees = 90;
    QList<CanvasGradientPreset> presets;
    for (const Row& row : rows)
        presets.append({QString::fromLatin1(row.id), QString::fromLatin1(row.displayName),
                        CanvasGradient{row.kind, color(row.start), color(row.end), angleDegrees, 0}});
    return presets;
}

} // namespace

const QList<CanvasGradientPreset>& gradientPresets() {
    static const QList<CanvasGradientPreset> presets = makePresets();
    return presets;
}

const CanvasGradient& defaultGradient() {
    const auto& presets = gradientPresets();
    const auto ocean = std::find_if(presets.begin(), presets.end(),
                                    [](const CanvasGradientPreset& preset) { return preset.id == u"ocean"; });
    return ocean == presets.end() ? presets.first().gradient : ocean->gradient;
}

} // namespace keldra
