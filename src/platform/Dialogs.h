#pragma once

#include "base/Result.h"

#include <QString>
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

/// The desktop's own dialogs; our panels wait behind them. Main thread.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    /// Lets the user pick one folder, or make it; answers on main with nothing when it was cancelled.
    virtual void chooseFolder(FolderDialog dialog, Completion<std::optional<QUrl>> done) = 0;
};

} // namespace keldra
