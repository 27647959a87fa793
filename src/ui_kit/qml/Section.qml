import QtQuick
import Keldra.UiKit

/// Controls under a title. `isLive` false dims and disables them.
Column {
    id: root

    default property alias content: body.data
    property string title
    property bool isLive: true

    width: parent ? parent.width : 0
    spacing: 3
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Label {
        width: parent.width
        height: 18
        text: root.title
        color: Theme.secondaryText
        font { pixelSize: Theme.smallFontSize; weight: Font.DemiBold; letterSpacing: 0.4 }
    }
    Column {
        id: body
        width: parent.width
        spacing: 4
        enabled: root.isLive
        opacity: root.isLive ? 1 : 0.46
        Behavior on opacity { NumberAnimation { duration: Theme.motion } }
    }
}
