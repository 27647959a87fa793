#include "editing/EditorCommandManager.h"

namespace keldra {

void EditorCommandManager::execute(EditorCommand command, EditorProject& project, const QDateTime& now) {
    command.apply(project, now);
    m_undoStack.push_back(std::move(command));
    if (m_undoStack.size() > limit)
        m_undoStack.erase(m_undoStack.begin());
    m_redoStack.clear();
    announce();
}

void EditorCommandManager::undo(EditorProject& project, const QDateTime& now) {
    if (m_undoStack.empty())
        return;
    m_undoStack.back().revert(project, now);
    m_redoStack.push_back(std::move(m_undoStack.back()));
    m_undoStack.pop_back();
    announce();
}

void EditorCommandManager::redo(EditorProject& project, const QDateTime& now) {
    if (m_redoStack.empty())
        return;
    m_redoStack.back().apply(project, now);
    // No limit here: a redo only brings back what an undo took.
    m_undoStack.push_back(std::move(m_redoStack.back()));
    m_redoStack.pop_back();
    announce();
}

void EditorCommandManager::announce() {
    Q_EMIT canUndoChanged(canUndo());
    Q_EMIT canRedoChanged(canRedo());
}

} // namespace keldra
