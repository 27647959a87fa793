#include "editing/EditorCommand.h"

namespace keldra {

void ProjectValues::writeTo(EditorProject& project) const {
    if (segments)
        project.segments = *segments;
    if (tracks)
        project.tracks = *tracks;
    if (canvas)
        project.canvas = *canvas;
    if (zoomBlocks)
        project.zoomBlocks = *zoomBlocks;
    if (clickSoundVolume)
        project.clickSoundVolume = *clickSoundVolume;
}

void EditorCommand::apply(EditorProject& project, const QDateTime& now) const {
    m_after.writeTo(project);
    project.updatedAt = now;
}

void EditorCommand::revert(EditorProject& project, const QDateTime& now) const {
    m_before.writeTo(project);
    project.updatedAt = now;
}

} // namespace keldra
