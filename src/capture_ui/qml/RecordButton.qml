import QtQuick
import Keldra.UiKit

/// The button that everything is about. Quiet while there is nothing to record, bright once there is, outlined while
/// recording.
ControlButton {
    id: root

    property bool isReady: false
    property bool isRecording: false
    readonly property color ink: isReady ? Theme.accentText : Theme.text

    implicitWidth: 92
    implicitHeight: 62
    radius: 13
    opacity: enabled ? 1 : 0.42
    restingFill: isReady ? Theme.accent : isRecording ? Qt.alpha(Theme.accent, 0.14) : Theme.fill
    hoveredFill: isReady ? Qt.lighter(Theme.accent, 1.1)
                         : isRecording ? Qt.alpha(Theme.accent, 0.24) : Theme.fillHovered
    pressedFill: isReady ? Qt.darker(Theme.accent, 1.12)
                         : isRecording ? Qt.alpha(Theme.accent, 0.32) : Theme.fillPressed
    edge: isRecording ? Theme.accent : isReady ? "transparent" : Theme.hairline
    Behavior on opacity { NumberAnimation { duration: Theme.motion } }

    contentItem: Item {
        Symbol {
            anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 5 }
            width: 22; height: 22
            name: root.isRecording ? "stop.fill" : "record.fill"
            color: root.isReady ? Theme.accentText : Theme.accent
        }
        Paragraph {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 4 }
            height: 30
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            text: root.text
            color: root.ink
            lineHeight: 1
            font { pixelSize: 12; weight: Font.DemiBold }
        }
    }
}
