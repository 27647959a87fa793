import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// What all buttons have: a hint, a name, keys, a ground that answers the pointer. `text` names the button also where it
/// is not shown.
T.Button {
    id: root

    property string hint: text
    property real radius: Theme.controlRadius
    property color restingFill: Theme.fill
    property color hoveredFill: Theme.fillHovered
    property color pressedFill: Theme.fillPressed
    property color edge: "transparent"

    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.description: hint
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    property Hint hintShower: Hint {
        target: root
        text: root.hint
    }

    background: Box {
        radius: root.radius
        color: root.down ? root.pressedFill : root.hovered && root.enabled ? root.hoveredFill : root.restingFill
        border { width: 1; color: root.edge }
        Behavior on color { ColorAnimation { duration: Theme.motion } }
    }

    FocusRing {
        radius: root.radius + gap
    }
}
