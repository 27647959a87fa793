#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace keldra::scene {

struct Options {
    /// Width 0 stands for the whole screen.
    int width = 0;
    int height = 0;
    int x = 0;
    int y = 0;
    bool isManaged = false;
    bool isStill = false;
    bool isLogging = false;
    bool printsLayout = false;
    std::string title = "KELDRA scene";
    double rate = 60;
    /// 0 stands for ever.
    double seconds = 0;
    /// In place of the patches' own colours, from the first on.
    std::vector<std::uint32_t> colours;
};

/// Nothing, and the reason on standard error, when the arguments are wrong.
std::optional<Options> parseOptions(int count, char** arguments);

/// The layout as JSON, for readers in other languages.
std::string layoutJson();

} // namespace keldra::scene
