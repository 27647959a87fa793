#pragma once

#include <QSettings>
#include <QString>

#include <memory>

namespace keldra {

/// The settings file of one of the program's names, in the user's configuration folder.
QString settingsPath(const QString& domain);

/// Opens a settings file, which need not exist. One that cannot be ours is set aside as "<path>.damaged" first: what is
/// no plain file, or is far longer than our settings. Reading such a thing may never end, or recurse without bound.
std::unique_ptr<QSettings> openSettings(const QString& path);

} // namespace keldra
