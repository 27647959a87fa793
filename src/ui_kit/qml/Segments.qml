import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// Choices of which one holds, side by side. What holds is bound to `current`; a press, or an arrow key, asks for
/// another.
Item {
    id: root

    /// What stands on the choices, and what each is called aloud.
    property list<string> labels
    property var names: labels
    property string hint
    property int current: -1
    signal chosen(int index)

    function step(from, by) {
        const next = Math.max(0, Math.min(labels.length - 1, from + by));
        choices.itemAt(next).forceActiveFocus(Qt.TabFocusReason);
        if (next !== current)
            chosen(next);
    }

    implicitHeight: 32
    Accessible.role: Accessible.Grouping
    Accessible.name: hint

    Box {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: Theme.fill
    }
    Box {
        readonly property real step: root.width / Math.max(1, root.labels.length)
        x: root.current * step + 2
        width: step - 4
        y: 2
        height: parent.height - 4
        visible: root.current >= 0
        radius: Theme.controlRadius - 2
        color: Qt.alpha(Theme.accent, 0.2)
        border { width: 1; color: Qt.alpha(Theme.accent, 0.45) }
        Behavior on x { NumberAnimation { duration: Theme.motion; easing.type: Easing.OutCubic } }
    }
    Row {
        anchors.fill: parent
        Repeater {
            id: choices
            model: root.labels
            T.AbstractButton {
                id: choice
                required property int index
                required property string modelData
                readonly property bool isCurrent: index === root.current
                readonly property string hint: root.hint

                width: root.width / root.labels.length
                height: root.height
                hoverEnabled: true
                focusPolicy: Qt.StrongFocus
                text: modelData
                Accessible.role: Accessible.RadioButton
                Accessible.name: root.names[index]
                Accessible.description: root.hint
                Accessible.checkable: true
                Accessible.checked: isCurrent
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
                Keys.onLeftPressed: root.step(index, -1)
                Keys.onRightPressed: root.step(index, 1)
                onClicked: root.chosen(index)
                property Hint hintShower: Hint {
                    target: choice
                    text: root.hint
                }
                contentItem: Label {
                    leftPadding: 4
                    rightPadding: 4
                    horizontalAlignment: Text.AlignHCenter
                    text: choice.text
                    color: choice.isCurrent || choice.hovered ? Theme.text : Theme.secondaryText
                    font.weight: choice.isCurrent ? Font.DemiBold : Font.Normal
                }
                FocusRing { gap: -1 }
            }
        }
    }
}
