#include "project/ProjectJson.h"

#include <cstdlib>

// Hostile bytes through the project decoder. What it takes must come back from its own text, and what it refuses it
// must refuse in one line.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace keldra;
    const auto json = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), qsizetype(size));
    const auto project = decodeProject(json);
    if (!project) {
        if (project.error().message.empty() || project.error().message.find('\n') != std::string::npos)
            std::abort();
        return 0;
    }
    const auto text = encodeProject(*project);
    if (!text)
        return 0;
    const auto again = decodeProject(*text);
    if (!again || encodeProject(*again) != text)
        std::abort();
    return 0;
}
