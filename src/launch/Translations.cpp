#include "launch/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace keldra {
namespace {

void install(const QLocale& locale, const QString& name, const QString& folder) {
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(locale, name, QStringLiteral("_"), folder))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
}

} // namespace

void installTranslations() {
    const QString ours = QStringLiteral(":/translations");
    const QLocale user = QLocale::system(), english(QLocale::English);
    install(user, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    // What is installed last is asked first.
    install(english, QStringLiteral("keldra"), ours);
    if (user.language() != english.language())
        install(user, QStringLiteral("keldra"), ours);
}

} // namespace keldra
