import QtQuick
import Keldra.UiKit

/// The settings, section by section.
Column {
    id: root

    required property var panel

    spacing: 12

    Section {
        title: qsTr("Cursor")
        Toggle {
            width: parent.width
            text: qsTr("Show clicks")
            hint: qsTr("Draw a ring where you click")
            isOn: root.panel.showClicks
            onToggleRequested: isOn => root.panel.setShowClicks(isOn)
        }
        EffectSlider {
            text: qsTr("Click intensity")
            number: root.panel.clickIntensity
            onValueRequested: value => root.panel.setClickIntensity(value)
        }
        Toggle {
            width: parent.width
            text: qsTr("Click sound")
            hint: qsTr("Let clicks be heard in the recording")
            isOn: root.panel.isClickSoundOn
            onToggleRequested: isOn => root.panel.setClickSoundOn(isOn)
        }
        Segments {
            width: parent.width
            labels: [qsTr("Soft"), qsTr("Classic")]
            hint: qsTr("Click sound")
            current: root.panel.clickSoundStyle
            onChosen: index => root.panel.setClickSoundStyle(index)
        }
        Toggle {
            width: parent.width
            text: qsTr("Cursor highlight")
            hint: qsTr("Draw a bright disc around the cursor")
            isOn: root.panel.isHighlightOn
            onToggleRequested: isOn => root.panel.setHighlightOn(isOn)
        }
        EffectSlider {
            text: qsTr("Intensity")
            hint: qsTr("Intensity of the cursor highlight")
            number: root.panel.highlightIntensity
            onValueRequested: value => root.panel.setHighlightIntensity(value)
        }
        EffectSlider {
            text: qsTr("Size")
            hint: qsTr("Size of the cursor highlight")
            number: root.panel.highlightSize
            onValueRequested: value => root.panel.setHighlightSize(value)
        }
    }
    Section {
        title: qsTr("Devices")
        DevicePicker {
            text: qsTr("Camera")
            devices: root.panel.cameras
            onPicked: id => root.panel.selectCamera(id)
        }
        DevicePicker {
            text: qsTr("Microphone")
            devices: root.panel.microphones
            onPicked: id => root.panel.selectMicrophone(id)
        }
    }
    Section {
        title: qsTr("Countdown")
        isLive: root.panel.canChange
        Segments {
            width: parent.width
            labels: ["3", "5", "10"]
            names: labels.map(seconds => qsTr("%1 seconds").arg(seconds))
            hint: qsTr("Seconds that are counted down before a recording")
            current: root.panel.countdown
            onChosen: index => root.panel.setCountdown(index)
        }
    }
    Section {
        title: qsTr("Video quality")
        isLive: root.panel.canChange
        Segments {
            width: parent.width
            labels: [qsTr("High"), qsTr("Medium"), qsTr("Low")]
            hint: qsTr("Video quality")
            current: root.panel.quality
            onChosen: index => root.panel.setQuality(index)
        }
    }
    Section {
        title: qsTr("Save to")
        isLive: root.panel.canChange
        TextButton {
            width: parent.width
            text: root.panel.folderName
            hint: root.panel.folderPath
            symbol: "folder"
            Accessible.name: qsTr("Save to %1").arg(text)
            onClicked: root.panel.chooseFolder()
        }
    }
    Section {
        title: qsTr("Editor")
        TextButton {
            width: parent.width
            text: qsTr("Open a video to edit")
            symbol: "film"
            onClicked: root.panel.openVideo()
        }
    }
    Section {
        title: qsTr("Privacy")
        Toggle {
            width: parent.width
            text: qsTr("Share usage data")
            hint: note.text
            isOn: root.panel.isUsageShared
            onToggleRequested: isOn => root.panel.setUsageShared(isOn)
        }
        Paragraph {
            id: note
            width: parent.width
            text: qsTr("Anonymous. Never the contents of your recordings.")
            color: Theme.secondaryText
            fontSizeMode: Text.FixedSize
            font.pixelSize: Theme.smallFontSize
        }
    }
}
