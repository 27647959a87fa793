import QtQuick
import Keldra.UiKit

/// Says what is missing before a recording can start.
PanelGround {
    id: root

    required property var panel

    onCancelled: panel.dismissSelectionRequired()

    Symbol {
        id: mark
        anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 20 }
        width: 30; height: 30
        name: "selection"
        color: Theme.accent
    }
    Paragraph {
        anchors { left: parent.left; right: parent.right; leftMargin: 24; rightMargin: 24 }
        anchors { top: mark.bottom; topMargin: 8; bottom: parent.bottom; bottomMargin: 14 }
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        text: qsTr("Select an area, window, or full screen before starting a recording")
        font.weight: Font.Medium
    }
    SymbolButton {
        anchors { right: parent.right; top: parent.top; margins: 8 }
        width: 26; height: 26
        text: qsTr("Dismiss")
        symbol: "xmark"
        symbolSize: 14
        onClicked: root.panel.dismissSelectionRequired()
    }
}
