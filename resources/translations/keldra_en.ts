<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>AppNoticeView</name>
    <message>
        <source>Dismiss</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CloseConfirmationView</name>
    <message>
        <source>A recording is in progress. Are you sure you want to quit?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go on recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Finish the recording and quit</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ControlPanelView</name>
    <message>
        <source>Quit app</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Area</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Record a part of the screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Record one window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Display</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Record a whole display</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn the camera off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn the camera on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Microphone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn the microphone off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn the microphone on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desktop lets programs record whole displays only</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DevicePicker</name>
    <message>
        <source>Not available</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Messages</name>
    <message>
        <source>Could not enable the camera.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Microphone access was not granted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The microphone was not ready to be enabled during this recording.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Screen recording access was not granted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No capture selection is active.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output folder updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera access was not granted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No camera is available.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not connect the camera.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not prepare the camera image.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The disk is nearly full, so the recording was ended. It is saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not prepare screen capture.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not connect the selected display.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not connect the microphone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not prepare the output file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not find the selected display.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not find the selected window.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not prepare the capture stream.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The capture selection is invalid.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The output folder is unavailable or not writable.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is too little free space on the output folder&apos;s disk to record.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desktop lets programs record whole displays only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desktop lets no program record the screen: it has no portal for it.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PostRecordingActionsView</name>
    <message>
        <source>Recording saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation>Show in Files</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QFileDialog</name>
    <message>
        <source>Files</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RecorderPanels</name>
    <message>
        <source>KELDRA</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing selected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Notice</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recording time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recording saved</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SelectionOverlay</name>
    <message>
        <source>Select an area of the screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drag to select · Esc to cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No window has been selected yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click a window to select it · Esc to cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click to select · Esc to cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SelectionRequiredView</name>
    <message>
        <source>Select an area, window, or full screen before starting a recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsSections</name>
    <message>
        <source>Cursor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show clicks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Draw a ring where you click</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click intensity</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click sound</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Let clicks be heard in the recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Soft</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Classic</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cursor highlight</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Draw a bright disc around the cursor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Intensity</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Intensity of the cursor highlight</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size of the cursor highlight</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Devices</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Microphone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Countdown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 seconds</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Seconds that are counted down before a recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Video quality</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>High</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Medium</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Low</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Editor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a video to edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Privacy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Share usage data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Anonymous. Never the contents of your recordings.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WebcamOverlayView</name>
    <message>
        <source>Picture of the camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Change camera size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Change camera shape</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop recording</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::AppDelegate</name>
    <message>
        <source>The screen is being recorded</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A recording that could not be finished has been kept.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On Wayland your desktop asks which display is recorded. Areas and windows cannot be picked there, and cursor effects are not drawn.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::AppModel</name>
    <message>
        <source>Recording folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::ControlPanelModel</name>
    <message>
        <source>Stop recording</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start recording</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::NoticeModel</name>
    <message>
        <source>Show</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Settings</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::RecordingStatusModel</name>
    <message>
        <source>Recording time %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::StatusItemController</name>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit App</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hide App</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show App</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>keldra::WindowCoordinator</name>
    <message>
        <source>Choose a video to edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This version of KELDRA cannot edit videos yet.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
