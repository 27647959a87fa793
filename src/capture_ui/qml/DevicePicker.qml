import QtQuick
import Keldra.UiKit

/// A menu of cameras or microphones under their common name.
Column {
    id: root

    property string text
    property var devices
    signal picked(string id)

    width: parent.width
    spacing: 2

    Label {
        width: parent.width
        height: 17
        text: root.text
        font.pixelSize: 12
        color: Theme.secondaryText
    }
    Picker {
        width: parent.width
        text: root.text
        emptyText: qsTr("Not available")
        ids: root.devices.ids
        model: root.devices.names
        current: root.devices.index
        onPicked: id => root.picked(id)
    }
}
