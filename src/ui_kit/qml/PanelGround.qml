import QtQuick
import Keldra.UiKit

/// What every panel stands on. Escape and keys that no control takes arrive at the root.
FocusScope {
    id: root

    default property alias content: ground.data
    property real radius: Theme.panelRadius
    /// Escape was pressed.
    signal cancelled

    focus: true
    Keys.onEscapePressed: root.cancelled()

    Box {
        id: ground
        anchors.fill: parent
        radius: root.radius
        color: Theme.ground
        border { width: 1; color: Theme.hairline }
    }
}
