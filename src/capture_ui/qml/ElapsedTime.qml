import QtQuick
import Keldra.UiKit

/// How long the recording is, in digits that keep their places.
Label {
    required property var panel

    leftPadding: 6
    rightPadding: 6
    horizontalAlignment: Text.AlignHCenter
    text: panel.elapsed
    color: "white"
    font { family: "monospace"; pixelSize: 15; weight: Font.Medium }
    Accessible.role: Accessible.StaticText
    Accessible.name: panel.elapsedName
}
