import QtQuick
import Keldra.UiKit

/// Asks before a recording is ended by leaving.
PanelGround {
    id: root

    required property var panel

    onCancelled: panel.cancelQuit()

    Paragraph {
        anchors { fill: parent; margins: 16; bottomMargin: answers.height + 22 }
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        text: qsTr("A recording is in progress. Are you sure you want to quit?")
        font.weight: Font.Medium
    }
    Row {
        id: answers
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 14 }
        spacing: 10
        TextButton {
            width: (answers.width - answers.spacing) / 2
            text: qsTr("No")
            hint: qsTr("Go on recording")
            focus: true
            onClicked: root.panel.cancelQuit()
        }
        TextButton {
            width: (answers.width - answers.spacing) / 2
            text: qsTr("Yes")
            hint: qsTr("Finish the recording and quit")
            isPrimary: true
            onClicked: root.panel.confirmQuit()
        }
    }
}
