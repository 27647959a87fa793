#include "capture_ui/ElapsedText.h"

#include <algorithm>

namespace keldra {

QString elapsedText(int seconds) {
    const int whole = std::max(0, seconds);
    return QString::asprintf("%02d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace keldra
