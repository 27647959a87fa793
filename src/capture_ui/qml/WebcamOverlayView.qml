import QtQuick
import Keldra.UiKit
import Keldra.CaptureUi

/// The camera's picture, where recordings have it, and what is done with it.
FocusScope {
    id: root

    required property var panel
    required property var status
    readonly property var outline: [
        { x: bubble.x, y: bubble.y, width: bubble.visible ? bubble.width : 0, height: bubble.height,
          radius: bubble.radius },
        { x: bar.x, y: bar.y, width: bar.width, height: bar.height, radius: bar.radius }
    ]

    focus: true

    Box {
        id: bubble
        // Recordings look for the picture here.
        x: (root.width - width) / 2
        y: 2
        width: root.panel.side
        height: root.panel.side
        radius: root.panel.cornerRadius
        visible: root.panel.isCameraRunning
        color: Theme.menuGround
        Behavior on radius { NumberAnimation { duration: Theme.motion; easing.type: Easing.OutCubic } }

        CameraPreview {
            anchors.fill: parent
            feed: root.panel.feed
            cornerRadius: bubble.radius
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Picture of the camera")
        }
    }
    Binding {
        target: root.panel.feed
        property: "isWatched"
        value: root.Window.window !== null && root.Window.window.visible && bubble.visible
    }
    Box {
        id: bar
        anchors.horizontalCenter: parent.horizontalCenter
        y: bubble.visible ? bubble.y + bubble.height + 10 : (root.height - height) / 2
        width: buttons.width + 10
        height: 40
        radius: 20
        color: Theme.ground
        border { width: 1; color: Theme.hairline }

        Row {
            id: buttons
            anchors.centerIn: parent
            spacing: 2
            SymbolButton {
                radius: 15
                text: qsTr("Change camera size")
                symbol: root.panel.isLarge ? "minus.magnifyingglass" : "plus.magnifyingglass"
                onClicked: root.panel.toggleSize()
            }
            SymbolButton {
                radius: 15
                text: qsTr("Change camera shape")
                symbol: root.panel.otherShapeSymbol
                onClicked: root.panel.toggleShape()
            }
            SymbolButton {
                visible: root.panel.isRecording
                radius: 15
                text: qsTr("Stop recording")
                symbol: "stop.fill"
                ink: Theme.accent
                onClicked: root.panel.stopRecording()
            }
            ElapsedTime {
                visible: root.panel.isRecording
                width: 94; height: 30
                panel: root.status
            }
        }
    }
}
