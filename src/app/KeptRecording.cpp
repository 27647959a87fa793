#include "app/KeptRecording.h"

#include <QDir>
#include <QFileInfo>

namespace keldra {
namespace {

QFileInfoList takesIn(const QString& folder, const QString& names) {
    return QDir(folder).entryInfoList({names}, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
}

} // namespace

std::optional<QUrl> takeUntoldKeptRecording(const QString& recoveryFolder, const QString& outputFolder,
                                            AppPreferences& preferences) {
    qint64 newest = preferences.value(preferenceKeys::toldOfKeptRecording).toLongLong();
    std::optional<QUrl> found;
    for (const QFileInfo& take :
         takesIn(recoveryFolder, QStringLiteral("*.mov")) + takesIn(outputFolder, QStringLiteral(".recovered-*.mov"))) {
        const qint64 written = take.lastModified().toMSecsSinceEpoch();
        if (written <= newest || take.size() == 0)
            continue;
        newest = written;
        found = QUrl::fromLocalFile(take.absoluteFilePath());
    }
    if (found)
        preferences.setValue(preferenceKeys::toldOfKeptRecording, QString::number(newest));
    return found;
}

} // namespace keldra
