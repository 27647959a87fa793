#pragma once

#include "platform/Workspace.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace keldra {

/// The command that opens a page of a desktop's settings; empty where none is known. `desktops` is what
/// XDG_CURRENT_DESKTOP says, e.g. "ubuntu:GNOME"; `hasProgram` tells whether a program is installed.
QStringList settingsCommand(SettingsPage page, const QString& desktops,
                            const std::function<bool(const QString&)>& hasProgram);

} // namespace keldra
