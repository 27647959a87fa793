import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// A line with a word and a switch. What it stands for is bound to `isOn`; a press asks for the other.
T.AbstractButton {
    id: root

    property string hint: text
    property bool isOn: false
    signal toggleRequested(bool isOn)

    implicitHeight: 28
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.description: hint
    Accessible.checkable: true
    Accessible.checked: isOn
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onClicked: toggleRequested(!isOn)

    property Hint hintShower: Hint {
        target: root
        text: root.hint
        isForPointer: root.hint !== root.text
    }

    contentItem: Item {
        Label {
            anchors { left: parent.left; right: rail.left; rightMargin: 10; verticalCenter: parent.verticalCenter }
            text: root.text
        }
        Box {
            id: rail
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            width: 36; height: 20
            radius: 10
            color: root.isOn ? root.hovered ? Qt.lighter(Theme.accent, 1.08) : Theme.accent
                             : root.hovered ? Theme.fillPressed : Theme.fillHovered
            Behavior on color { ColorAnimation { duration: Theme.motion } }
            Box {
                x: root.isOn ? parent.width - width - 2 : 2
                anchors.verticalCenter: parent.verticalCenter
                width: 16; height: 16
                radius: 8
                color: Theme.text
                Behavior on x { NumberAnimation { duration: Theme.motion; easing.type: Easing.OutCubic } }
            }
            FocusRing { control: root; radius: 12 }
        }
    }
}
