#pragma once

#include "base/Executor.h"
#include "platform/Dialogs.h"

#include <QPointer>

class QFileDialog;

namespace keldra {

/// The desktop's file dialogs as Qt knows them, and Qt's own where the desktop has none. One is open at a time: while
/// it is, the next request brings it to the front and counts as cancelled. Needs a QApplication.
class QtDialogs final : public Dialogs {
public:
    /// `mainQueue` lives longer.
    explicit QtDialogs(Executor& mainQueue) : m_mainQueue(mainQueue) {}
    /// A dialog that is open goes without an answer.
    ~QtDialogs() override;

    void chooseFolder(FolderDialog dialog, Completion<std::optional<QUrl>> done) override;
    void chooseFile(FileDialog dialog, Completion<std::optional<QUrl>> done) override;

private:
    /// Nothing while another one is open.
    QFileDialog* makeDialog(const Completion<std::optional<QUrl>>& done);

    Executor& m_mainQueue;
    QPointer<QFileDialog> m_open;
};

/// "*.mp4", "*.mov", ...: the file names of these content types; a type may be a family such as "video/*".
QStringList namePatterns(const QStringList& types);

} // namespace keldra
