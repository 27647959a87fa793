import QtQuick
import Keldra.UiKit

/// How long the recording is.
Item {
    id: root

    required property var panel
    readonly property var outline: [{ x: 0, y: 0, width: width, height: height, radius: height / 2 }]

    Box {
        anchors.fill: parent
        radius: height / 2
        color: Theme.isTranslucent ? Qt.rgba(0, 0, 0, 0.6) : "black"
    }
    ElapsedTime {
        anchors.fill: parent
        panel: root.panel
    }
}
