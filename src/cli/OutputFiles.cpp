#include "cli/OutputFiles.h"

#include <QSaveFile>

namespace keldra {

Result<void> writeFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return fail(Error{"File", 1, (path + QStringLiteral(": ") + file.errorString()).toStdString(), {}});
    return {};
}

} // namespace keldra
