#pragma once

#include "base/Result.h"

#include <QString>

namespace keldra {

/// Pixels per point for the whole desktop: what the user told Qt (`qtScaleFactor`, the text of QT_SCALE_FACTOR), else a
/// 96th of Xft.dpi in `resources` (the text of RESOURCE_MANAGER on the root window), else 1. Numbers that no desktop
/// can mean are left out.
double scaleFactor(const QString& qtScaleFactor, const QString& resources);

/// The same for the display that DISPLAY names. Errors: one line that says what to do about a missing display.
Result<double> readX11ScaleFactor(const QString& qtScaleFactor);

} // namespace keldra
