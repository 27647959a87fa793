#pragma once

#include "editing/EditorCommand.h"

#include <QObject>

#include <vector>

namespace keldra {

/// The history of a project: what was done, and what was undone. Main thread.
class EditorCommandManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY canRedoChanged)

public:
    static constexpr std::size_t limit = 100;

    explicit EditorCommandManager(QObject* parent = nullptr) : QObject(parent) {}

    bool canUndo() const { return !m_undoStack.empty(); }
    bool canRedo() const { return !m_redoStack.empty(); }

    /// Applies the command and makes it the last step; the oldest beyond the limit is forgotten, and so is everything
    /// that was undone.
    void execute(EditorCommand command, EditorProject& project, const QDateTime& now);
    /// Nothing happens when there is nothing to undo or redo.
    void undo(EditorProject& project, const QDateTime& now);
    void redo(EditorProject& project, const QDateTime& now);

Q_SIGNALS:
    void canUndoChanged(bool canUndo);
    void canRedoChanged(bool canRedo);

private:
    void announce();

    std::vector<EditorCommand> m_undoStack;
    std::vector<EditorCommand> m_redoStack;
};

} // namespace keldra
