#pragma once

#include "base/Result.h"
#include "base/SerialQueue.h"
#include "project/EditorProject.h"

#include <QString>

#include <optional>

namespace keldra {

/// Where projects lie unless a store is told otherwise: `KELDRA/EditorRecovery` in KELDRA_DATA_HOME, else in the user's
/// data folder, else in the temporary folder.
QString defaultRecoveryDirectory();

/// Keeps projects safe across a crash or a closed window: one JSON file each, replaced whole, in one folder.
///
/// Threads: calls from one thread; the work runs on the store's own queue, so a load never meets half of a save.
/// Errors:  the system's words after the file's or folder's name.
class EditorProjectStore {
public:
    /// Touches no files.
    explicit EditorProjectStore(QString recoveryDirectory = defaultRecoveryDirectory());

    void save(EditorProject project, Executor& answer, Completion<void> done);
    /// The project of that source that was edited last, or nothing. Files that cannot be read are passed over.
    void loadRecoveredProject(QUrl sourceURL, Executor& answer, Completion<std::optional<EditorProject>> done);

    const QString& recoveryDirectory() const { return m_recoveryDirectory; }

private:
    QString m_recoveryDirectory;
    SerialQueue m_queue{"KELDRA.EditorProjectStore"};
};

/// What the store does for save() and loadRecoveredProject(), at once, on the caller's thread. A save replaces the file
/// in one step, so it needs no agreement with others.
[[nodiscard]] Result<void> saveProject(const EditorProject& project, const QString& directory);
[[nodiscard]] Result<std::optional<EditorProject>> findRecoveredProject(const QUrl& sourceURL,
                                                                        const QString& directory);

} // namespace keldra
