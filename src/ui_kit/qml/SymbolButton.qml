import QtQuick
import Keldra.UiKit

/// A small button that shows only a symbol.
ControlButton {
    id: root

    property string symbol
    property real symbolSize: 18
    property color ink: hovered ? Theme.text : Theme.secondaryText

    implicitWidth: 30
    implicitHeight: 30
    radius: Math.min(Theme.controlRadius, height / 2)
    restingFill: "transparent"

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            width: root.symbolSize; height: root.symbolSize
            name: root.symbol
            color: root.ink
            Behavior on color { ColorAnimation { duration: Theme.motion } }
        }
    }
}
