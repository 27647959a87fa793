#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

namespace keldra {

/// Replaces a file whole. Errors: the system's words after the file's name; the old file stays.
[[nodiscard]] Result<void> writeFile(const QString& path, const QByteArray& bytes);

} // namespace keldra
