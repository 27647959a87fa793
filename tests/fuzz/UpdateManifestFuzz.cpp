#include "services/UpdateCheck.h"

#include <cstdlib>

// Hostile bytes as the update manifest. Whatever is taken leads to a web page, and of two versions one at most is
// newer.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace keldra;
    const auto json = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), qsizetype(size));
    const auto manifest = decodeUpdateManifest(json);
    if (manifest && (!manifest->downloadURL.scheme().startsWith(u"http") || manifest->downloadURL.host().isEmpty()))
        std::abort();
    const QString remote = manifest ? manifest->version : QString::fromUtf8(json.left(size / 2));
    const QString local = manifest ? QStringLiteral("1.2.3") : QString::fromUtf8(json.mid(size / 2));
    if (isVersionNewer(remote, local) && isVersionNewer(local, remote))
        std::abort();
    if (isVersionNewer(remote, remote))
        std::abort();
    return 0;
}
