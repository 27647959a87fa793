#include "recording/RecordingPath.h"

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

} // namespace keldra
