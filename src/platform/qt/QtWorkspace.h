#pragma once

#include "platform/Workspace.h"

namespace keldra {

/// The desktop's file manager and settings programs.
class QtWorkspace final : public Workspace {
public:
    /// Where no file manager answers to its name on the session bus, the file's folder is opened.
    void reveal(const QUrl& file) override;
    bool hasSettings(SettingsPage page) const override;
    void openSettings(SettingsPage page) override;
};

} // namespace keldra
