#pragma once

#include "app/PreferenceKeys.h"

#include <QDateTime>
#include <QSettings>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>
#include <type_traits>

namespace keldra {

/// Where recordings go when no folder is set.
struct UserFolders {
    /// Used if it exists.
    QString desktop;
    QString home;
};

/// The persisted settings. It holds no values of its own: several of these on one file share what is in it. A value
/// that is missing, or is not what it should be, is never an error: each setting has its fallback. Main thread.
class AppPreferences {
public:
    /// `legacy`: the settings of the program's earlier name; they are only read.
    AppPreferences(std::unique_ptr<QSettings> defaults, std::unique_ptr<QSettings> legacy, UserFolders folders);
    /// The user's own, with what the earlier name left taken over.
    static std::unique_ptr<AppPreferences> ofUser();

    /// Takes over, once ever, the settings of the earlier name that are not set here.
    void migrateLegacyPreferences();
    /// Removes settings that carry the earlier name in their own.
    void removeLegacyKeys();

    /// T: bool, double, or an enumeration of the settings. Numbers are finite and otherwise as stored: bounds are for
    /// whoever uses them.
    template <typename T>
    T value(PreferenceKey<T> key) const;
    /// Empty for none.
    QString value(TextPreferenceKey key) const;

    template <typename T>
    void setValue(PreferenceKey<T> key, std::type_identity_t<T> value);
    /// An empty text removes the setting.
    void setValue(TextPreferenceKey key, const QString& value);

    /// Before it the user is not asked again to update.
    std::optional<QDateTime> updateReminderDate() const;
    void setUpdateReminderDate(const std::optional<QDateTime>& date);

    /// Within the bounds of its slider, unlike the other two of the effects.
    double loadClickIndicatorIntensity() const;
    /// The folder that is set, while it exists; else the desktop, else home. What is set stays set, so that a folder
    /// that comes back is used again.
    QUrl loadOutputDirectory() const;

private:
    std::unique_ptr<QSettings> m_defaults;
    std::unique_ptr<QSettings> m_legacy;
    UserFolders m_folders;
};

} // namespace keldra
