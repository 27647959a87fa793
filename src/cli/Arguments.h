#pragma once

#include "base/Result.h"

#include <QMap>
#include <QStringList>

#include <optional>
#include <vector>

namespace keldra {

/// Whether an option is followed by a value. An optional value is taken only when the next word is not an option.
enum class OptionValue { none, required, optional };

struct Option {
    QString name; ///< with its dashes, e.g. "--display"
    OptionValue value = OptionValue::none;
};

/// What stood on a command line after the subcommand.
struct Arguments {
    QStringList positional;
    /// By name; options without a value map to an empty text.
    QMap<QString, QString> options;

    bool has(const QString& name) const { return options.contains(name); }
    std::optional<QString> value(const QString& name) const {
        return has(name) ? std::optional(options[name]) : std::nullopt;
    }
};

/// A wrong command line; its words go to the user and the exit status is 2.
Error usageError(const QString& words);
bool isUsageError(const Error& error);

/// Sorts words into options and positional arguments ("--name value" or "--name=value"; after "--" all is positional).
/// Errors: usage errors for unknown or repeated options and missing or surplus values.
[[nodiscard]] Result<Arguments> parseArguments(const QStringList& words, const std::vector<Option>& known);

/// A number of an option, read the C way whatever the locale. Usage errors for anything else.
[[nodiscard]] Result<double> parseNumber(const QString& name, const QString& text);

} // namespace keldra
