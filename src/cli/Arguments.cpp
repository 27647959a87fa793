#include "cli/Arguments.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

constexpr const char* usageDomain = "Usage";

bool looksLikeOption(const QString& word) {
    return word.startsWith(u"--") && word.size() > 2;
}

} // namespace

Error usageError(const QString& words) {
    return Error{usageDomain, 2, words.toStdString(), {}};
}

bool isUsageError(const Error& error) {
    return error.domain == usageDomain;
}

Result<Arguments> parseArguments(const QStringList& words, const std::vector<Option>& known) {
    Arguments arguments;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString& word = words[i];
        if (word == u"--") {
            arguments.positional += words.mid(i + 1);
            break;
        }
        if (!looksLikeOption(word)) {
            arguments.positional += word;
            continue;
        }
        const qsizetype equals = word.indexOf(u'=');
        const QString name = word.left(equals < 0 ? word.size() : equals);
        const auto option =
            std::find_if(known.begin(), known.end(), [&](const Option& candidate) { return candidate.name == name; });
        if (option == known.end())
            return fail(usageError(QStringLiteral("unknown option %1").arg(name)));
        if (arguments.has(name))
            return fail(usageError(QStringLiteral("%1 is given twice").arg(name)));

        QString value;
        if (equals >= 0) {
            if (option->value == OptionValue::none)
                return fail(usageError(QStringLiteral("%1 takes no value").arg(name)));
            value = word.mid(equals + 1);
        } else if (option->value != OptionValue::none) {
            const bool hasNext = i + 1 < words.size() && words[i + 1] != u"--" && !looksLikeOption(words[i + 1]);
            if (hasNext)
                value = words[++i];
            else if (option->value == OptionValue::required)
                return fail(usageError(QStringLiteral("%1 needs a value").arg(name)));
        }
        arguments.options.insert(name, value);
    }
    return arguments;
}

Result<double> parseNumber(const QString& name, const QString& text) {
    bool isNumber = false;
    const double number = QLocale::c().toDouble(text, &isNumber);
    if (!isNumber || !std::isfinite(number))
        return fail(usageError(QStringLiteral("%1 needs a number, not \"%2\"").arg(name, text)));
    return number;
}

} // namespace keldra
