#pragma once

#include "recording/CameraOverlayShape.h"
#include "recording/CameraOverlaySize.h"
#include "recording/ClickSoundStyle.h"
#include "recording/CountdownDuration.h"
#include "recording/RecordingQuality.h"

namespace keldra {

/// A setting: its name in the settings file, and what stands for it while the file has no usable value.
template <typename T>
struct PreferenceKey {
    const char* name;
    T fallback;
};

/// A setting that is a text, or none.
struct TextPreferenceKey {
    const char* name;
};

namespace preferenceKeys {

inline constexpr PreferenceKey<bool> hasCompletedOnboarding{"hasCompletedOnboarding", false};
inline constexpr PreferenceKey<bool> hasCompletedInterfaceTour{"hasCompletedInterfaceTour", false};
inline constexpr PreferenceKey<bool> analyticsEnabled{"analyticsEnabled", false};
inline constexpr TextPreferenceKey updateReminderDate{"updateReminderDate"};
/// Written, for whoever looks into the file, and never read: microphone and camera always begin switched off.
inline constexpr PreferenceKey<bool> microphoneEnabled{"preferences.microphoneEnabled", false};
inline constexpr PreferenceKey<bool> cameraEnabled{"preferences.cameraEnabled", false};
inline constexpr PreferenceKey<bool> showClickIndicators{"preferences.showClickIndicators", true};
inline constexpr PreferenceKey<bool> clickSoundEnabled{"preferences.clickSoundEnabled", false};
inline constexpr PreferenceKey<ClickSoundStyle> clickSoundStyle{"preferences.clickSoundStyle", ClickSoundStyle::soft};
inline constexpr PreferenceKey<CountdownDuration> countdownDuration{"preferences.countdownSeconds",
                                                                    CountdownDuration::five};
inline constexpr PreferenceKey<double> clickIndicatorIntensity{"preferences.clickIndicatorIntensity", 1.0};
inline constexpr PreferenceKey<bool> showCursorHighlight{"preferences.showCursorHighlight", false};
inline constexpr PreferenceKey<double> cursorHighlightIntensity{"preferences.cursorHighlightIntensity", 0.65};
inline constexpr PreferenceKey<double> cursorHighlightSize{"preferences.cursorHighlightSize", 48.0};
inline constexpr TextPreferenceKey cameraDeviceID{"preferences.cameraDeviceID"};
inline constexpr TextPreferenceKey microphoneDeviceID{"preferences.microphoneDeviceID"};
inline constexpr PreferenceKey<RecordingQuality> recordingQuality{"preferences.recordingQuality",
                                                                  RecordingQuality::high};
inline constexpr TextPreferenceKey outputDirectoryPath{"preferences.outputDirectoryPath"};
inline constexpr PreferenceKey<CameraOverlaySize> cameraOverlaySize{"preferences.cameraOverlaySize",
                                                                    CameraOverlaySize::large};
inline constexpr PreferenceKey<CameraOverlayShape> cameraOverlayShape{"preferences.cameraOverlayShape",
                                                                      CameraOverlayShape::circle};
/// When the newest kept recording was written that the user has been told of, in milliseconds since 1970.
inline constexpr TextPreferenceKey toldOfKeptRecording{"recovery.toldOfKeptRecording"};
inline constexpr PreferenceKey<bool> migratedLegacyPreferences{"branding.migratedLegacyPreferences", false};

} // namespace preferenceKeys
} // namespace keldra
