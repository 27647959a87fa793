#pragma once

#include <QString>

namespace keldra {

/// A line of the analytics client in the log, which no user sees. Unprintable characters, which a
/// server may have put there, become blanks. Any thread.
void logAnalytics(const QString& text);

} // namespace keldra
