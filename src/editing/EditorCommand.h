#pragma once

#include "project/EditorProject.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace keldra {

/// Whole values for some of a project's fields; what is not set is left alone. Lists share their clips with the project
/// they came from, so keeping many is cheap.
struct ProjectValues {
    std::optional<QList<EditorSegment>> segments;
    std::optional<std::optional<QList<EditorTrack>>> tracks;
    std::optional<std::optional<CanvasStyle>> canvas;
    std::optional<std::optional<QList<ZoomBlock>>> zoomBlocks;
    std::optional<std::optional<double>> clickSoundVolume;

    void writeTo(EditorProject& project) const;
    friend bool operator==(const ProjectValues&, const ProjectValues&) = default;
};

/// One undoable change: the same fields before and after. There is no inverse logic; undoing restores what was stored.
/// Immutable once made.
class EditorCommand {
public:
    EditorCommand(QString description, ProjectValues before, ProjectValues after)
        : m_description(std::move(description)), m_before(std::move(before)), m_after(std::move(after)) {}

    /// The action's name, e.g. "Split clip".
    const QString& description() const { return m_description; }
    /// Both write only the stored fields, and set `updatedAt` to `now`.
    void apply(EditorProject& project, const QDateTime& now) const;
    void revert(EditorProject& project, const QDateTime& now) const;

private:
    QString m_description;
    ProjectValues m_before;
    ProjectValues m_after;
};

} // namespace keldra
