#include "recording/RecordingPath.h"

#include "base/DataFolder.h"
#include "media/DiskSpace.h"
#include "recording/ScreenRecorderError.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace keldra {

Result<QString> makeOutputPath(const QString& outputDirectory, const QDateTime& now) {
    const QFileInfo folder(outputDirectory);
    if (outputDirectory.isEmpty() || !folder.isDir() || !folder.isWritable())
        return fail(makeError(ScreenRecorderError::outputDirectoryUnavailable));
    const QString moment = QLocale::c().toString(now.toLocalTime(), u"yyyy-MM-dd-HH-mm-ss");
    return QDir(folder.absoluteFilePath()).filePath(QStringLiteral("KELDRA-") + moment + QStringLiteral(".mov"));
}

QString recordingRecoveryDirectory() {
    return QString::fromStdString(dataFolder()) + QStringLiteral("/RecordingRecovery");
}

Result<void> checkRoomToRecord(const QString& outputDirectory) {
    const auto room = freeBytesIn(outputDirectory.toStdString());
    if (!room || *room >= diskSpace::neededToStart)
        return {};
    constexpr std::int64_t megabyte = 1 << 20;
    Error error = makeError(ScreenRecorderError::tooLittleFreeSpace);
    error.message += " It has " + std::to_string(*room / megabyte) + " MB, and " +
                     std::to_string(diskSpace::neededToStart / megabyte) + " MB are needed.";
    return fail(std::move(error));
}

} // namespace keldra
