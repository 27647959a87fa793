import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// Shows where the keyboard is. A child of the control.
Box {
    property T.Control control: parent
    property real gap: 2

    anchors { fill: parent; margins: -gap }
    radius: Theme.controlRadius + gap
    color: "transparent"
    border { width: 2; color: Theme.accent }
    opacity: control.visualFocus ? 1 : 0
    visible: opacity > 0
    Behavior on opacity { NumberAnimation { duration: Theme.motion } }
}
