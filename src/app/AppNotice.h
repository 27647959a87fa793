#pragma once

#include "base/Executor.h"
#include "platform/Workspace.h"

#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>
#include <variant>

namespace keldra {

/// Something that the user is told, mostly for a few seconds, with an action that may be taken meanwhile.
struct AppNotice {
    enum class Kind { success, error, info };
    struct RevealFile {
        QUrl file;
        friend bool operator==(const RevealFile&, const RevealFile&) = default;
    };
    /// A file to be shown, or the settings page that helps.
    using Action = std::variant<RevealFile, SettingsPage>;

    QUuid id;
    Kind kind = Kind::info;
    QString message;
    std::optional<Action> action{};
    friend bool operator==(const AppNotice&, const AppNotice&) = default;
};

/// How long a notice stays; nothing when it stays until its user has acted or another one comes: a file that is offered
/// must not slip away from somebody who looks elsewhere.
std::optional<Duration> noticeLifetime(const AppNotice& notice);

/// The action that helps with an error of that text: the settings of the permission that it complains about.
std::optional<AppNotice::Action> noticeAction(const QString& text);

} // namespace keldra
