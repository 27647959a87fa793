import QtQuick
import Keldra.UiKit

Box {
    property string text

    implicitWidth: Math.ceil(Math.min(label.implicitWidth, 280)) + 20
    implicitHeight: Math.ceil(label.height) + 12
    width: implicitWidth
    height: implicitHeight
    radius: 8
    color: Theme.menuGround
    border { width: 1; color: Theme.hairline }

    Text {
        id: label
        anchors.centerIn: parent
        width: Math.min(implicitWidth, 280)
        text: parent.text
        color: Theme.text
        font.pixelSize: 12
        wrapMode: Text.Wrap
        textFormat: Text.PlainText
    }
}
