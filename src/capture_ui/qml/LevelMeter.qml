import QtQuick
import Keldra.UiKit

/// How loud the microphone is, from 0 to 1.
Box {
    id: root

    property real level: 0

    width: 4
    height: 22
    radius: 2
    color: Theme.fillHovered

    Box {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: Math.round(Math.max(0, Math.min(1, root.level)) * parent.height)
        radius: 2
        color: Theme.accent
    }
}
