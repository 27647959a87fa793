#include "platform/qt/SettingsCommand.h"

namespace keldra {
namespace {

struct Row {
    SettingsPage page;
    /// Empty: any.
    const char* desktop;
    const char* command;
};

/// No desktop has a page about recording the screen. The first row that fits is taken.
constexpr Row rows[] = {
    {SettingsPage::camera, "GNOME", "gnome-control-center camera"},
    {SettingsPage::microphone, "GNOME", "gnome-control-center microphone"},
    {SettingsPage::microphone, "KDE", "systemsettings kcm_pulseaudio"},
    {SettingsPage::microphone, "KDE", "systemsettings5 kcm_pulseaudio"},
    {SettingsPage::microphone, "X-Cinnamon", "cinnamon-settings sound"},
    {SettingsPage::microphone, "MATE", "mate-volume-control --page=input"},
    // Tab 4 is that of input devices.
    {SettingsPage::microphone, "", "pavucontrol --tab=4"},
};

} // namespace

QStringList settingsCommand(SettingsPage page, const QString& desktops,
                            const std::function<bool(const QString&)>& hasProgram) {
    const QStringList names = desktops.split(u':', Qt::SkipEmptyParts);
    for (const Row& row : rows) {
        const QString desktop = QString::fromLatin1(row.desktop);
        const QStringList command = QString::fromLatin1(row.command).split(u' ');
        if (row.page == page && (desktop.isEmpty() || names.contains(desktop)) && hasProgram(command.first()))
            return command;
    }
    return {};
}

} // namespace keldra
