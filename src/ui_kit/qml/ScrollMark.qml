import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// Where in something longer one is; shown only when there is more.
T.ScrollBar {
    id: root

    implicitWidth: 8
    padding: 2
    minimumSize: 0.1
    visible: size < 1
    contentItem: Box {
        implicitWidth: 4
        radius: 2
        color: root.pressed || root.hovered ? Theme.secondaryText : Theme.fillPressed
        Behavior on color { ColorAnimation { duration: Theme.motion } }
    }
}
