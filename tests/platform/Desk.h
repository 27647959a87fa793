#pragma once

#include "platform/TestDesktop.h"
#include "platform/x11/X11Platform.h"

#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>

namespace keldra {

inline constexpr std::uint32_t magenta = 0xff00ff;
inline constexpr Duration sixtieth{16'666'667};

/// A desktop with its adapters at one scale factor.
class Desk {
public:
    explicit Desk(double scaleFactor = 1) : scale(scaleFactor) {
        auto made = makeX11Platform(std::make_shared<SystemHostClock>(), mainQueue, scaleFactor);
        if (!made)
            throw std::runtime_error(made.error().message);
        platform = std::move(*made);
    }

    std::optional<WindowInfo> find(xcb_window_t window) const {
        for (const WindowInfo& info : platform.windows->windows())
            if (info.windowID == window)
                return info;
        return std::nullopt;
    }
    /// A rectangle of desktop points as pixels of that screen's pictures.
    PixelRect inScreen(const QRectF& rect, const Screen& screen) const {
        const auto pixels = [this](double points) { return int(std::lround(points * scale)); };
        return {pixels(rect.x() - screen.frame.x()),
                pixels(screen.frame.y() + screen.frame.height() - rect.y() - rect.height()), pixels(rect.width()),
                pixels(rect.height())};
    }
    StreamConfiguration display(const Screen& screen, Duration interval = sixtieth, bool showsCursor = false) const {
        return {DisplaySource{screen.number}, int(std::lround(screen.frame.width() * scale)),
                int(std::lround(screen.frame.height() * scale)), interval, showsCursor};
    }
    StreamConfiguration window(const WindowInfo& info, Duration interval = sixtieth, bool showsCursor = false) const {
        return {WindowSource{info.windowID}, int(std::lround(info.frame.width() * scale)),
                int(std::lround(info.frame.height() * scale)), interval, showsCursor};
    }
    std::unique_ptr<StreamRun> run(const StreamConfiguration& configuration,
                                   std::function<void(const ScreenFrame&)> inspector = nullptr) {
        auto stream = std::make_unique<StreamRun>(platform, mainQueue, configuration, std::move(inspector));
        EXPECT_FALSE(stream->startError()) << stream->startError()->message;
        return stream;
    }

    double scale;
    TestDesktop hands;
    PumpedExecutor mainQueue;
    Platform platform;
};

/// Whether the scene's patches, number and clock are at that place of the picture, to the pixel.
inline testing::AssertionResult showsScene(const PixelBuffer& picture, int left, int top) {
    for (const scene::Patch& patch : scene::patches)
        for (const int x : {patch.area.x, patch.area.x + patch.area.width - 1})
            for (const int y : {patch.area.y, patch.area.y + patch.area.height - 1}) {
                if (left + x < 0 || left + x >= picture.width() || top + y < 0 || top + y >= picture.height())
                    return testing::AssertionFailure() << patch.name << " is outside";
                if (scene::colourAt(picture, left + x, top + y) != patch.rgb)
                    return testing::AssertionFailure() << patch.name << " is not at " << left + x << "," << top + y;
            }
    if (!scene::readNumber(picture, scene::frameNumber, left, top) ||
        !scene::readNumber(picture, scene::clockMilliseconds, left, top))
        return testing::AssertionFailure() << "the numbers are not readable";
    return testing::AssertionSuccess();
}

inline testing::AssertionResult isOpaque(const PixelBuffer& picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.row(0, y)[4 * x + 3] != 255)
                return testing::AssertionFailure()
                       << "alpha " << int(picture.row(0, y)[4 * x + 3]) << " at " << x << "," << y;
    return testing::AssertionSuccess();
}

inline std::vector<std::string> sceneAt(int x, int y, const std::vector<std::string>& more, int width = 640,
                                        int height = 400) {
    const auto text = [](int number) { return std::to_string(number); };
    std::vector<std::string> arguments{"--geometry", text(width) + "x" + text(height) + "+" + text(x) + "+" + text(y)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

} // namespace keldra
