#pragma once

#include "base/HostClock.h"
#include "platform/AudioMeter.h"
#include "platform/CameraSession.h"
#include "platform/CaptureDevices.h"
#include "platform/Dialogs.h"
#include "platform/DisplayCapture.h"
#include "platform/EventMonitor.h"
#include "platform/MicrophoneStream.h"
#include "platform/OwnWindows.h"
#include "platform/Permissions.h"
#include "platform/Pointer.h"
#include "platform/RunningApplications.h"
#include "platform/ScreenStream.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "platform/SleepInhibitor.h"
#include "platform/SystemSounds.h"
#include "platform/WindowList.h"
#include "platform/Workspace.h"

#include <memory>

namespace keldra {

/// What a desktop gives us, as launch/ put it together. The members live as long as the program.
///
/// Without `devices` there are neither cameras nor microphones, and their factories stand empty. An empty
/// `makeScreenStream` says that this desktop cannot stream, and recordings capture the display as it is.
/// Without `permissions` the desktop forbids nothing. A `pickDisplay` says that the desktop asks its user at the start
/// of a recording which display it shows; then there is nothing else to be recorded. The command line has no windows,
/// and needs none of `workspace`, `dialogs`, `sounds`, `events`, `applications` and `sleepInhibitor`.
struct Platform {
    std::shared_ptr<HostClock> clock;
    std::shared_ptr<Screens> screens;
    std::shared_ptr<WindowList> windows;
    std::shared_ptr<Permissions> permissions;
    std::shared_ptr<Workspace> workspace;
    std::shared_ptr<Dialogs> dialogs;
    std::shared_ptr<SystemSounds> sounds;
    std::shared_ptr<EventMonitor> events;
    /// Empty where this login session has no bus.
    std::shared_ptr<RunningApplications> applications;
    std::shared_ptr<SleepInhibitor> sleepInhibitor;
    std::shared_ptr<ShareableContent> shareableContent;
    ScreenStreamFactory makeScreenStream;
    DisplayCaptureFactory makeDisplayCapture;
    DisplayPicker pickDisplay;
    std::shared_ptr<Pointer> pointer;
    std::shared_ptr<OwnWindows> ownWindows = std::make_shared<OwnWindows>();
    std::shared_ptr<CaptureDevices> devices;
    CameraSessionFactory makeCameraSession;
    MicrophoneStreamFactory makeMicrophoneStream;
    AudioMeterFactory makeAudioMeter;
};

} // namespace keldra
