#include "app/SettingsFile.h"

#include "base/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace keldra {
namespace {

/// Ours are a tenth of this. QSettings unpacks nested values by recursion, and what fits in here fits on the stack.
constexpr qint64 longestFile = 32 * 1024;

void setAsideUnlessOurs(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists() || (file.isFile() && file.size() <= longestFile))
        return;
    const QString aside = path + QStringLiteral(".damaged");
    QFile::remove(aside);
    const bool isMoved = QFile::rename(path, aside);
    logLine("[KELDRA]", (isMoved ? "settings set aside as " : "unusable settings at ") + aside.toStdString());
}

} // namespace

QString settingsPath(const QString& domain) {
    return QStringLiteral("%1/%2/%2.ini")
        .arg(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation), domain);
}

std::unique_ptr<QSettings> openSettings(const QString& path) {
    setAsideUnlessOurs(path);
    return std::make_unique<QSettings>(path, QSettings::IniFormat);
}

} // namespace keldra
