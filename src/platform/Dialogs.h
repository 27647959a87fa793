#pragma once

#include "base/Result.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace keldra {

struct FolderDialog {
    QString title;
    /// Of the button that confirms.
    QString prompt;
    /// Where it begins.
    QUrl folder;
    friend bool operator==(const FolderDialog&, const FolderDialog&) = default;
};

struct FileDialog {
    QString message;
    QString prompt;
    /// Content types that can be picked, as MIME names.
    QStringList types;
    friend bool operator==(const FileDialog&, const FileDialog&) = default;
};

/// The desktop's own dialogs; our panels wait behind them. Main thread.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    /// Lets the user pick one folder, or make it; answers on main with nothing when it was cancelled.
    virtual void chooseFolder(FolderDialog dialog, Completion<std::optional<QUrl>> done) = 0;
    /// Lets the user pick one file that is there; answers in the same way.
    virtual void chooseFile(FileDialog dialog, Completion<std::optional<QUrl>> done) = 0;
};

} // namespace keldra
