#pragma once

#include "app/AppPreferences.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace keldra {

/// The newest recording among those that were kept when they failed: those in `recoveryFolder`, and hidden ones in
/// `outputFolder`, where they stay when the other folder is on another disk. Nothing when `preferences` say that the
/// user knows of it; from then on they do.
std::optional<QUrl> takeUntoldKeptRecording(const QString& recoveryFolder, const QString& outputFolder,
                                            AppPreferences& preferences);

} // namespace keldra
