#include "platform/qt/QtWorkspace.h"

#include "platform/qt/BusCall.h"
#include "platform/qt/SettingsCommand.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>

namespace keldra {
namespace {

QStringList commandFor(SettingsPage page) {
    return settingsCommand(page, qEnvironmentVariable("XDG_CURRENT_DESKTOP"),
                           [](const QString& program) { return !QStandardPaths::findExecutable(program).isEmpty(); });
}

} // namespace

void QtWorkspace::reveal(const QUrl& file) {
    // A file manager that has to be started first takes its time.
    constexpr std::chrono::seconds patience{15};
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call.setArguments({QStringList{file.toString(QUrl::FullyEncoded)}, QString()});
    callBus(QDBusConnection::sessionBus(), call, patience, [file](const Result<QDBusMessage>& reply) {
        if (!reply)
            QDesktopServices::openUrl(file.adjusted(QUrl::RemoveFilename));
    });
}

bool QtWorkspace::hasSettings(SettingsPage page) const {
    return !commandFor(page).isEmpty();
}

void QtWorkspace::openSettings(SettingsPage page) {
    const QStringList command = commandFor(page);
    if (!command.isEmpty())
        QProcess::startDetached(command.first(), command.mid(1));
}

} // namespace keldra
