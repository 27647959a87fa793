import QtQuick
import Keldra.UiKit

/// The panel by which everything is recorded: quit, record, what to record, camera, microphone, settings.
PanelGround {
    id: root

    required property var panel

    onCancelled: if (panel.isSettingsPresented) panel.toggleSettings()

    Row {
        anchors.centerIn: parent
        spacing: 4

        SymbolButton {
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("Quit app")
            symbol: "xmark"
            symbolSize: 16
            onClicked: root.panel.quit()
        }
        RecordButton {
            text: root.panel.recordLabel
            isReady: root.panel.isReady
            isRecording: root.panel.isRecording
            enabled: root.panel.isRecordEnabled
            onClicked: root.panel.record()
        }
        Item { width: 2; height: 1 }
        Row {
            spacing: 4
            opacity: root.panel.areModesLive ? 1 : 0.4
            Behavior on opacity { NumberAnimation { duration: Theme.motion } }
            Repeater {
                model: [
                    { label: qsTr("Area"), hint: qsTr("Record a part of the screen"), symbol: "crop" },
                    { label: qsTr("Window"), hint: qsTr("Record one window"), symbol: "window" },
                    { label: qsTr("Display"), hint: qsTr("Record a whole display"), symbol: "display" }
                ]
                TileButton {
                    required property int index
                    required property var modelData
                    readonly property bool isRefused: root.panel.isModeRefused(index)
                    enabled: root.panel.areModesLive
                    text: modelData.label
                    hint: isRefused ? qsTr("This desktop lets programs record whole displays only") : modelData.hint
                    opacity: isRefused ? 0.4 : 1
                    symbol: modelData.symbol
                    isActive: root.panel.activeMode === index
                    onClicked: root.panel.chooseMode(index)
                }
            }
        }
        Box {
            anchors.verticalCenter: parent.verticalCenter
            width: 1; height: 36
            color: Theme.hairline
        }
        TileButton {
            text: qsTr("Camera")
            hint: root.panel.isCameraOn ? qsTr("Turn the camera off") : qsTr("Turn the camera on")
            symbol: root.panel.cameraSymbol
            isActive: root.panel.isCameraOn
            onClicked: root.panel.toggleCamera()
        }
        TileButton {
            width: 76
            text: qsTr("Microphone")
            hint: root.panel.isMicrophoneOn ? qsTr("Turn the microphone off") : qsTr("Turn the microphone on")
            symbol: root.panel.microphoneSymbol
            isActive: root.panel.isMicrophoneOn
            extra: root.panel.isMicrophoneOn ? meter : null
            onClicked: root.panel.toggleMicrophone()
        }
        SymbolButton {
            anchors.verticalCenter: parent.verticalCenter
            height: 34
            text: qsTr("Settings")
            symbol: "gear"
            symbolSize: 21
            ink: root.panel.isSettingsPresented ? Theme.accent : hovered ? Theme.text : Theme.secondaryText
            onClicked: root.panel.toggleSettings()
        }
    }

    Component {
        id: meter
        LevelMeter { level: root.panel.microphoneLevel }
    }
}
