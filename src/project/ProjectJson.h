#pragma once

#include "base/Result.h"
#include "project/EditorProject.h"

#include <QByteArray>

namespace keldra {

enum class ProjectJsonError {
    notJson = 1,    ///< the bytes are no JSON at all
    badValue = 2,   ///< a key is missing or holds something else than expected
    unwritable = 3, ///< a value that JSON cannot hold, e.g. infinity
};

/// The project as UTF-8 JSON, indented, keys sorted. Numbers are written in the shortest form that reads back as the
/// same bits (but for the sign of a zero), dates to the whole second; what is not set is left out.
/// Errors: ProjectJsonError::unwritable, one line naming the key.
Result<QByteArray> encodeProject(const EditorProject& project);

/// The reverse. Unknown keys are ignored, the last of equal keys counts, values are taken as they are.
/// Errors: one line that names the key, e.g. "segments[2].duration: expected a number".
Result<EditorProject> decodeProject(const QByteArray& json);

/// The same for a canvas style alone.
Result<QByteArray> encodeCanvasStyle(const CanvasStyle& style);
Result<CanvasStyle> decodeCanvasStyle(const QByteArray& json);

} // namespace keldra
