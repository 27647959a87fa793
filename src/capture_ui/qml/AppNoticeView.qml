import QtQuick
import Keldra.UiKit

/// Tells something for a few seconds.
PanelGround {
    id: root

    required property var panel
    readonly property var colors: ({ success: Theme.success, error: Theme.warning, info: Theme.secondaryText })

    Accessible.role: Accessible.AlertMessage
    Accessible.name: panel.message
    onCancelled: panel.dismiss()

    Symbol {
        id: mark
        anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
        width: 20; height: 20
        name: root.panel.symbol
        color: root.colors[root.panel.kind]
    }
    Paragraph {
        anchors { left: mark.right; leftMargin: 12; verticalCenter: parent.verticalCenter }
        anchors { right: action.visible ? action.left : close.left; rightMargin: 10 }
        height: 40
        verticalAlignment: Text.AlignVCenter
        // A path has no words.
        wrapMode: Text.Wrap
        text: root.panel.message
    }
    TextButton {
        id: action
        anchors { right: close.left; rightMargin: 6; verticalCenter: parent.verticalCenter }
        width: Math.min(implicitWidth, 130)
        height: 30
        visible: root.panel.actionLabel !== ""
        text: root.panel.actionLabel
        onClicked: root.panel.performAction()
    }
    SymbolButton {
        id: close
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        width: 28; height: 28
        text: qsTr("Dismiss")
        symbol: "xmark"
        symbolSize: 15
        onClicked: root.panel.dismiss()
    }
}
