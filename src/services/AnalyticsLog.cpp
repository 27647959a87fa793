#include "services/AnalyticsLog.h"

#include "base/Log.h"

#include <algorithm>

namespace keldra {

void logAnalytics(const QString& text) {
    QString line = text;
    std::replace_if(
        line.begin(), line.end(), [](QChar character) { return !character.isPrint(); }, u' ');
    logLine("[KELDRA Analytics]", line.toStdString());
}

} // namespace keldra
