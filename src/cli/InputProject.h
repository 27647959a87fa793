#pragma once

#include "base/Result.h"
#include "base/SerialQueue.h"
#include "cli/CommandContext.h"
#include "composition/EditorCompositionBuilder.h"
#include "media/Asset.h"
#include "project/EditorProjectStore.h"

#include <QCoroTask>
#include <QString>

namespace keldra {

/// Opens INPUT, a movie or a project file, for a command. Main thread.
class InputProject {
public:
    explicit InputProject(const CommandContext& context) : m_context(context) {}

    /// The project that the editor would open for it.
    /// Errors: one line that names the file and says what is wrong with it.
    QCoro::Task<Result<EditorProject>> load(QString path);

    /// What plays and renders the project.
    QCoro::Task<Result<EditorCompositionOutput>> build(EditorProject project);

    /// Opens media files, away from the main thread. Good as long as this object.
    AssetLoader assetLoader();

private:
    const CommandContext& m_context;
    SerialQueue m_files{"KELDRA.Files"};
    /// Only read from here.
    EditorProjectStore m_store;
};

/// Refuses an output that is one of the files read: the old file goes when the new one comes.
[[nodiscard]] Result<void> checkNotAnInput(const QString& output, const QString& input, const EditorProject& project);

/// The bytes of a file. Errors: the system's words after the file's name.
[[nodiscard]] Result<QByteArray> readFile(const QString& path);

} // namespace keldra
