import QtQuick
import Keldra.UiKit

/// Offers what can be done with a finished recording.
PanelGround {
    id: root

    required property var panel

    onCancelled: panel.dismissRecording()

    Symbol {
        id: mark
        anchors { left: parent.left; leftMargin: 14; verticalCenter: parent.verticalCenter }
        width: 20; height: 20
        name: "checkmark.circle.fill"
        color: Theme.success
    }
    Paragraph {
        anchors { left: mark.right; leftMargin: 8; right: actions.left; rightMargin: 6 }
        anchors.verticalCenter: parent.verticalCenter
        height: 40
        verticalAlignment: Text.AlignVCenter
        text: qsTr("Recording saved")
        lineHeight: 1
        font { pixelSize: 12; weight: Font.Medium }
    }
    Row {
        id: actions
        anchors { right: close.left; rightMargin: 4; verticalCenter: parent.verticalCenter }
        spacing: 5
        TextButton {
            width: Math.min(implicitWidth, 100)
            text: qsTr("Edit recording")
            isPrimary: true
            focus: true
            onClicked: root.panel.editRecording()
        }
        TextButton {
            width: Math.min(implicitWidth, 92)
            text: qsTr("Reveal in Finder")
            onClicked: root.panel.revealRecording()
        }
        TextButton {
            width: Math.min(implicitWidth, 66)
            text: qsTr("Dismiss")
            onClicked: root.panel.dismissRecording()
        }
    }
    SymbolButton {
        id: close
        anchors { right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter }
        width: 26; height: 26
        text: qsTr("Close")
        symbol: "xmark"
        symbolSize: 14
        onClicked: root.panel.dismissRecording()
    }
}
