#include "scene/SceneOptions.h"

#include "scene/SceneLayout.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace keldra::scene {
namespace {

constexpr const char* usage =
    "usage: keldra_scene [--geometry WxH+X+Y] [--managed] [--title T] [--rate HZ] [--still] [--seconds S]\n"
    "                    [--colors RRGGBB,RRGGBB,...] [--log]\n"
    "       keldra_scene --layout\n";

bool readNumber(const std::string& text, double& number) {
    char* end = nullptr;
    number = std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' && number >= 0;
}

bool readGeometry(const std::string& text, Options& options) {
    int used = 0;
    const bool isRead =
        std::sscanf(text.c_str(), "%dx%d%d%d%n", &options.width, &options.height, &options.x, &options.y, &used) == 4;
    return isRead && std::size_t(used) == text.size() && options.width >= minimumWidth &&
           options.height >= minimumHeight;
}

bool readColours(const std::string& text, std::vector<std::uint32_t>& colours) {
    std::istringstream list(text);
    for (std::string each; std::getline(list, each, ',');) {
        char* end = nullptr;
        const unsigned long colour = std::strtoul(each.c_str(), &end, 16);
        if (each.size() != 6 || *end != '\0')
            return false;
        colours.push_back(std::uint32_t(colour));
    }
    return !colours.empty() && colours.size() <= patches.size();
}

bool readFlag(const std::string& name, Options& options) {
    const std::pair<const char*, bool Options::*> flags[] = {{"--managed", &Options::isManaged},
                                                             {"--still", &Options::isStill},
                                                             {"--log", &Options::isLogging},
                                                             {"--layout", &Options::printsLayout}};
    for (const auto& [flag, member] : flags)
        if (name == flag) {
            options.*member = true;
            return true;
        }
    return false;
}

bool readValue(const std::string& name, const std::string& value, Options& options) {
    if (name == "--geometry")
        return readGeometry(value, options);
    if (name == "--title") {
        options.title = value;
        return true;
    }
    if (name == "--rate")
        return readNumber(value, options.rate) && options.rate > 0;
    if (name == "--seconds")
        return readNumber(value, options.seconds);
    return name == "--colors" && readColours(value, options.colours);
}

std::string json(const Area& area) {
    std::ostringstream text;
    text << "\"x\":" << area.x << ",\"y\":" << area.y << ",\"width\":" << area.width << ",\"height\":" << area.height;
    return text.str();
}

std::string json(const NumberRow& row) {
    std::ostringstream text;
    text << "{\"x\":" << row.x << ",\"y\":" << row.y << ",\"bits\":" << row.bits << "}";
    return text.str();
}

} // namespace

std::optional<Options> parseOptions(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string name = arguments[i];
        if (readFlag(name, options))
            continue;
        if (i + 1 < count && readValue(name, arguments[i + 1], options)) {
            ++i;
            continue;
        }
        std::fprintf(stderr, "keldra_scene: wrong argument: %s\n%s", name.c_str(), usage);
        return std::nullopt;
    }
    return options;
}

std::string layoutJson() {
    std::ostringstream text;
    text << "{\"block\":" << blockSize << ",\"number\":" << json(frameNumber)
         << ",\"clockMilliseconds\":" << json(clockMilliseconds) << ",\"patches\":[";
    for (const Patch& patch : patches) {
        char colour[8];
        std::snprintf(colour, sizeof colour, "%06x", patch.rgb);
        text << (&patch == patches.data() ? "" : ",") << "{\"name\":\"" << patch.name << "\"," << json(patch.area)
             << ",\"rgb\":\"" << colour << "\"}";
    }
    text << "],\"movingFrom\":0.5,\"minimumWidth\":" << minimumWidth << ",\"minimumHeight\":" << minimumHeight << "}";
    return text.str();
}

} // namespace keldra::scene
