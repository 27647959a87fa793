#pragma once

#include <QTranslator>

namespace keldra::testing {

/// A language that nobody speaks: every text is in brackets, wears accents, and is half as long again. What is cut off,
/// or was never handed to the translation, shows at once.
class PseudoTranslator final : public QTranslator {
public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* source, const char*, int) const override {
        static const QString plain = QStringLiteral("aceinouyACEINOUY"), accented = QStringLiteral("åçéîñöüýÅÇÉÎÑÖÜÝ");
        QString text = QString::fromUtf8(source);
        const qsizetype extra = text.size() / 2 + 1;
        for (QChar& letter : text)
            if (const qsizetype place = plain.indexOf(letter); place >= 0)
                letter = accented[place];
        return u'[' + text + u' ' + QString(extra, u'~') + u']';
    }
};

} // namespace keldra::testing
