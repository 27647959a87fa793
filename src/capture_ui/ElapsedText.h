#pragma once

#include <QString>

namespace keldra {

/// Hours, minutes and seconds with two digits each, e.g. "01:01:01"; hours grow as they must.
QString elapsedText(int seconds);

} // namespace keldra
