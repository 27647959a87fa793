import QtQuick
import Keldra.UiKit

/// A menu of cameras or microphones under their common name.
Item {
    id: root

    property string text
    property var devices
    signal picked(string id)

    width: parent.width
    height: picker.height

    Label {
        anchors { left: parent.left; right: picker.left; rightMargin: 8; verticalCenter: parent.verticalCenter }
        text: root.text
    }
    Picker {
        id: picker
        anchors.right: parent.right
        width: 160
        text: root.text
        emptyText: qsTr("Not available")
        ids: root.devices.ids
        model: root.devices.names
        current: root.devices.index
        onPicked: id => root.picked(id)
    }
}
