#pragma once

#include "base/Result.h"

#include <QDateTime>
#include <QString>

namespace keldra {

/// The file of a recording that starts at `now`: "KELDRA-yyyy-MM-dd-HH-mm-ss.mov" in local time with Latin digits.
/// Whether the name is free is left to whoever opens it: a second recording in the same second must fail, not get
/// another name.
/// Errors: outputDirectoryUnavailable unless the folder exists and can be written to.
[[nodiscard]] Result<QString> makeOutputPath(const QString& outputDirectory, const QDateTime& now);

/// Where a recording that failed is kept: `RecordingRecovery` in the program's data folder.
QString recordingRecoveryDirectory();

/// Errors: tooLittleFreeSpace where the disk of that folder has no room for a recording; where it cannot tell, it has.
[[nodiscard]] Result<void> checkRoomToRecord(const QString& outputDirectory);

} // namespace keldra
