#include "app/AppPreferences.h"

#include "app/EffectBounds.h"
#include "app/SettingsFile.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <cmath>
#include <cstddef>

namespace keldra {
namespace {

const QString currentDomain = QStringLiteral("KELDRA");
const QString legacyDomain = QStringLiteral("TurvexCaptureNative");

/// What the earlier name may have left.
constexpr const char* migratedKeys[] = {
    preferenceKeys::hasCompletedOnboarding.name,   preferenceKeys::hasCompletedInterfaceTour.name,
    preferenceKeys::analyticsEnabled.name,         preferenceKeys::updateReminderDate.name,
    preferenceKeys::microphoneEnabled.name,        preferenceKeys::cameraEnabled.name,
    preferenceKeys::showClickIndicators.name,      preferenceKeys::clickSoundEnabled.name,
    preferenceKeys::clickSoundStyle.name,          preferenceKeys::countdownDuration.name,
    preferenceKeys::clickIndicatorIntensity.name,  preferenceKeys::showCursorHighlight.name,
    preferenceKeys::cursorHighlightIntensity.name, preferenceKeys::cursorHighlightSize.name,
    preferenceKeys::cameraDeviceID.name,           preferenceKeys::microphoneDeviceID.name,
    preferenceKeys::recordingQuality.name,         preferenceKeys::outputDirectoryPath.name,
    preferenceKeys::cameraOverlaySize.name,        preferenceKeys::cameraOverlayShape.name,
};

QString nameOf(const char* key) {
    return QString::fromLatin1(key);
}

/// A settings file holds texts; what was set in this run may still have its type. Other types are nobody's.
std::optional<QString> readText(const QVariant& stored) {
    switch (stored.typeId()) {
    case QMetaType::QString:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return stored.toString();
    default:
        return std::nullopt;
    }
}

std::optional<double> readNumber(const QVariant& stored) {
    bool isNumber = false;
    const double number = readText(stored).value_or(QString()).toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<bool> readBool(const QVariant& stored) {
    const QString text = readText(stored).value_or(QString()).toLower();
    if (text == u"true" || text == u"false")
        return text == u"true";
    if (const auto number = readNumber(stored))
        return *number != 0;
    return std::nullopt;
}

/// The texts that enumerators have in the settings file.
template <typename T>
struct RawValue {
    T value;
    const char* text;
};
template <typename T>
constexpr std::nullptr_t rawValues = nullptr;
template <>
constexpr RawValue<ClickSoundStyle> rawValues<ClickSoundStyle>[] = {{ClickSoundStyle::soft, "soft"},
                                                                    {ClickSoundStyle::classic, "classic"}};
template <>
constexpr RawValue<CountdownDuration> rawValues<CountdownDuration>[] = {
    {CountdownDuration::three, "3"}, {CountdownDuration::five, "5"}, {CountdownDuration::ten, "10"}};
template <>
constexpr RawValue<RecordingQuality> rawValues<RecordingQuality>[] = {
    {RecordingQuality::high, "high"}, {RecordingQuality::medium, "medium"}, {RecordingQuality::low, "low"}};
template <>
constexpr RawValue<CameraOverlaySize> rawValues<CameraOverlaySize>[] = {{CameraOverlaySize::small, "small"},
                                                                        {CameraOverlaySize::large, "large"}};
template <>
constexpr RawValue<CameraOverlayShape> rawValues<CameraOverlayShape>[] = {
    {CameraOverlayShape::circle, "circle"}, {CameraOverlayShape::roundedSquare, "roundedSquare"}};

template <typename T>
std::optional<T> read(const QVariant& stored) {
    if constexpr (std::is_same_v<T, bool>) {
        return readBool(stored);
    } else if constexpr (std::is_same_v<T, double>) {
        return readNumber(stored);
    } else {
        const auto text = readText(stored);
        for (const auto& each : rawValues<T>)
            if (text == QLatin1String(each.text))
                return each.value;
        return std::nullopt;
    }
}

template <typename T>
QVariant write(T value) {
    if constexpr (std::is_enum_v<T>) {
        for (const auto& each : rawValues<T>)
            if (each.value == value)
                return QString::fromLatin1(each.text);
        return {};
    } else {
        return value;
    }
}

} // namespace

AppPreferences::AppPreferences(std::unique_ptr<QSettings> defaults, std::unique_ptr<QSettings> legacy,
                               UserFolders folders)
    : m_defaults(std::move(defaults)), m_legacy(std::move(legacy)), m_folders(std::move(folders)) {}

std::unique_ptr<AppPreferences> AppPreferences::ofUser() {
    auto preferences = std::make_unique<AppPreferences>(
        openSettings(settingsPath(currentDomain)), openSettings(settingsPath(legacyDomain)),
        UserFolders{QStandardPaths::writableLocation(QStandardPaths::DesktopLocation), QDir::homePath()});
    preferences->migrateLegacyPreferences();
    preferences->removeLegacyKeys();
    return preferences;
}

void AppPreferences::migrateLegacyPreferences() {
    const QString guard = nameOf(preferenceKeys::migratedLegacyPreferences.name);
    if (m_defaults->contains(guard))
        return;
    for (const char* key : migratedKeys) {
        const QString name = nameOf(key);
        if (!m_defaults->contains(name) && m_legacy->contains(name))
            m_defaults->setValue(name, m_legacy->value(name));
    }
    m_defaults->setValue(guard, true);
}

void AppPreferences::removeLegacyKeys() {
    const QStringList names = m_defaults->allKeys();
    for (const QString& name : names)
        if (name.contains(legacyDomain))
            m_defaults->remove(name);
}

template <typename T>
T AppPreferences::value(PreferenceKey<T> key) const {
    return read<T>(m_defaults->value(nameOf(key.name))).value_or(key.fallback);
}

template <typename T>
void AppPreferences::setValue(PreferenceKey<T> key, std::type_identity_t<T> value) {
    m_defaults->setValue(nameOf(key.name), write<T>(value));
}

#define KELDRA_PREFERENCE_TYPE(T)                                                                                      \
    template T AppPreferences::value(PreferenceKey<T>) const;                                                          \
    template void AppPreferences::setValue(PreferenceKey<T>, T);
KELDRA_PREFERENCE_TYPE(bool)
KELDRA_PREFERENCE_TYPE(double)
KELDRA_PREFERENCE_TYPE(ClickSoundStyle)
KELDRA_PREFERENCE_TYPE(CountdownDuration)
KELDRA_PREFERENCE_TYPE(RecordingQuality)
KELDRA_PREFERENCE_TYPE(CameraOverlaySize)
KELDRA_PREFERENCE_TYPE(CameraOverlayShape)
#undef KELDRA_PREFERENCE_TYPE

QString AppPreferences::value(TextPreferenceKey key) const {
    return readText(m_defaults->value(nameOf(key.name))).value_or(QString());
}

void AppPreferences::setValue(TextPreferenceKey key, const QString& value) {
    if (value.isEmpty())
        m_defaults->remove(nameOf(key.name));
    else
        m_defaults->setValue(nameOf(key.name), value);
}

std::optional<QDateTime> AppPreferences::updateReminderDate() const {
    const QVariant stored = m_defaults->value(nameOf(preferenceKeys::updateReminderDate.name));
    const QDateTime date = stored.typeId() == QMetaType::QDateTime
                               ? stored.toDateTime()
                               : QDateTime::fromString(readText(stored).value_or(QString()), Qt::ISODateWithMs);
    return date.isValid() ? std::optional(date) : std::nullopt;
}

void AppPreferences::setUpdateReminderDate(const std::optional<QDateTime>& date) {
    setValue(preferenceKeys::updateReminderDate, date ? date->toUTC().toString(Qt::ISODateWithMs) : QString());
}

double AppPreferences::loadClickIndicatorIntensity() const {
    return effectBounds::clickIndicatorIntensity.clamp(value(preferenceKeys::clickIndicatorIntensity));
}

QUrl AppPreferences::loadOutputDirectory() const {
    // A relative path would mean another folder in every run.
    const auto isFolder = [](const QString& path) { return QDir::isAbsolutePath(path) && QFileInfo(path).isDir(); };
    for (const QString& path : {value(preferenceKeys::outputDirectoryPath), m_folders.desktop})
        if (isFolder(path))
            return QUrl::fromLocalFile(path);
    return QUrl::fromLocalFile(m_folders.home);
}

} // namespace keldra
