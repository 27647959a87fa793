import QtQuick
import Keldra.UiKit

/// A button with a word, and a symbol before it where one is given.
ControlButton {
    id: root

    property string symbol
    /// The one that most people want.
    property bool isPrimary: false
    property color ink: isPrimary ? Theme.accentText : Theme.text

    implicitWidth: Math.ceil(label.implicitWidth) + (symbol !== "" ? 24 : 0) + 28
    implicitHeight: 32
    restingFill: isPrimary ? Theme.accent : Theme.fill
    hoveredFill: isPrimary ? Qt.lighter(Theme.accent, 1.1) : Theme.fillHovered
    pressedFill: isPrimary ? Qt.darker(Theme.accent, 1.12) : Theme.fillPressed

    contentItem: Item {
        Row {
            anchors.centerIn: parent
            spacing: 7
            Symbol {
                width: 17; height: 17
                anchors.verticalCenter: parent.verticalCenter
                visible: root.symbol !== ""
                name: root.symbol
                color: root.ink
            }
            Paragraph {
                id: label
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, root.width - 14 - (root.symbol !== "" ? 24 : 0))
                height: root.height - 4
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                lineHeight: 1
                text: root.text
                color: root.ink
                font.weight: Font.Medium
            }
        }
    }
}
