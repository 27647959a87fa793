import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// A word, a number and a slider below them. It keeps drags to itself: its window, movable by its background, stays.
/// What holds is bound to `value`; a drag, or an arrow key, asks for another.
T.Slider {
    id: root

    property string text
    property string valueText
    property string hint: text
    signal valueRequested(real value)

    implicitHeight: 40
    topPadding: 20
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    live: true
    snapMode: T.Slider.SnapAlways
    wheelEnabled: false
    Accessible.name: text
    Accessible.description: hint
    onMoved: valueRequested(root.value)

    property Hint hintShower: Hint {
        target: root
        text: root.hint
        isForPointer: root.hint !== root.text
    }

    Label {
        anchors { left: parent.left; right: number.left; rightMargin: 8 }
        height: 20
        text: root.text
        color: Theme.secondaryText
        font.pixelSize: 12
    }
    Label {
        id: number
        anchors.right: parent.right
        height: 20
        text: root.valueText
        font.pixelSize: 12
    }

    background: Box {
        x: root.leftPadding
        y: root.topPadding + (root.availableHeight - height) / 2
        width: root.availableWidth
        height: 4
        radius: 2
        color: Theme.fillHovered
        Box {
            width: root.handle.x + root.handle.width / 2 - parent.x
            height: parent.height
            radius: 2
            color: Theme.accent
        }
    }
    handle: Box {
        x: root.leftPadding + root.visualPosition * (root.availableWidth - width)
        y: root.topPadding + (root.availableHeight - height) / 2
        width: 16; height: 16
        radius: 8
        color: root.pressed ? Theme.accent : Theme.text
        border { width: root.visualFocus ? 2 : 0; color: Theme.accent }
        scale: root.pressed ? 1.12 : root.hovered ? 1.06 : 1
        Behavior on scale { NumberAnimation { duration: Theme.motion } }
        Behavior on color { ColorAnimation { duration: Theme.motion } }
    }
    FocusRing { radius: Theme.controlRadius; gap: 3 }
}
