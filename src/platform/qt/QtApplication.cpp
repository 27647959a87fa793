#include "platform/qt/QtApplication.h"

#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QSysInfo>

#include <sys/utsname.h>

namespace keldra {
namespace {

QString osVersion() {
    // VERSION_ID of os-release; a rolling distribution has none.
    const QString version = QSysInfo::productVersion();
    return version == u"unknown" ? QString() : version;
}

QString languageCode() {
    const QLocale::Language language = QLocale::system().language();
    return language == QLocale::C ? QString() : QLocale::languageToCode(language);
}

QString machine() {
    utsname names{};
    return uname(&names) == 0 ? QString::fromLocal8Bit(names.machine) : QString();
}

} // namespace

QString deviceModel(const QString& file, const QString& otherwise) {
    constexpr qint64 longestName = 256;
    QFile firmware(file);
    if (!firmware.open(QIODevice::ReadOnly))
        return otherwise;
    const QString name = QString::fromUtf8(firmware.read(longestName)).simplified();
    return name.isEmpty() ? otherwise : name;
}

QtApplication::QtApplication(QString version, QString build)
    : m_facts{std::move(version),      std::move(build),
              QStringLiteral("Linux"), osVersion(),
              languageCode(),          deviceModel(QStringLiteral("/sys/class/dmi/id/product_name"), machine())} {
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &Application::willTerminate);
    if (auto* windows = qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        connect(windows, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive)
                Q_EMIT didBecomeActive();
        });
}

void QtApplication::terminate() {
    // A window may veto QGuiApplication::quit(); who asks here has asked the user already.
    QCoreApplication::exit();
}

} // namespace keldra
