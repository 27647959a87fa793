import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// Says what a control does once the pointer or the keyboard has rested on it. Not again after a press, until they come
/// back.
QtObject {
    id: root

    required property T.Control target
    property string text
    /// Whether the pointer asks for it too; not needed where the text already stands on the control.
    property bool isForPointer: true
    property bool isSpent: false
    readonly property bool isPressed: target.pressed === true
    readonly property bool isWanted: (target.hovered && isForPointer || target.visualFocus) && !isPressed && !isSpent

    property Timer delay: Timer {
        interval: 650
        running: root.isWanted && root.text !== ""
        onTriggered: Hints.show(root.target, root.text)
    }
    property Connections movements: Connections {
        target: root.target
        function onHoveredChanged() { root.isSpent = false }
        function onVisualFocusChanged() { root.isSpent = false }
    }
    onIsPressedChanged: if (isPressed) isSpent = true
    onIsWantedChanged: if (!isWanted) Hints.hide(target)
    Component.onDestruction: Hints.hide(target)
}
