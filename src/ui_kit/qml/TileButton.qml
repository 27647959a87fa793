import QtQuick
import Keldra.UiKit

/// A symbol over a word.
ControlButton {
    id: root

    property string symbol
    /// What it stands for is on.
    property bool isActive: false
    property color ink: isActive ? Theme.accent : hovered && enabled ? Theme.text : Theme.secondaryText
    /// Beside the symbol.
    property Component extra

    implicitWidth: 60
    implicitHeight: 62
    radius: 12
    restingFill: isActive ? Qt.alpha(Theme.accent, 0.16) : "transparent"
    hoveredFill: isActive ? Qt.alpha(Theme.accent, 0.22) : Theme.fillHovered
    pressedFill: isActive ? Qt.alpha(Theme.accent, 0.28) : Theme.fillPressed
    edge: isActive ? Qt.alpha(Theme.accent, 0.35) : "transparent"
    Accessible.checkable: true
    Accessible.checked: isActive

    contentItem: Item {
        Symbol {
            id: mark
            anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 10 }
            width: 24; height: 24
            name: root.symbol
            color: root.ink
            Behavior on color { ColorAnimation { duration: Theme.motion } }
        }
        Loader {
            anchors { left: mark.right; leftMargin: 3; verticalCenter: mark.verticalCenter }
            sourceComponent: root.extra
        }
        Label {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 2; bottomMargin: 8 }
            height: 15
            horizontalAlignment: Text.AlignHCenter
            text: root.text
            color: root.isActive ? Theme.text : root.ink
            font.pixelSize: Theme.smallFontSize
        }
    }
}
