#include "base/DataFolder.h"

#include <cstdlib>
#include <string_view>

namespace keldra {
namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace

std::string dataFolder() {
    std::string base = variable("KELDRA_DATA_HOME");
    if (base.empty())
        base = variable("XDG_DATA_HOME");
    // Only the program's own variable may be relative.
    if (variable("KELDRA_DATA_HOME").empty() && !base.starts_with('/')) {
        const std::string home = variable("HOME");
        base = home.empty() ? "/tmp" : home + "/.local/share";
    }
    return base + (base.ends_with('/') ? "KELDRA" : "/KELDRA");
}

} // namespace keldra
