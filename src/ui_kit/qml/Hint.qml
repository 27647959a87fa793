import QtQuick
import Keldra.UiKit

/// Says what an item does once the pointer or the keyboard has rested on it.
QtObject {
    id: root

    required property Item target
    property string text
    property bool isWanted: false

    property Timer delay: Timer {
        interval: 650
        running: root.isWanted && root.text !== ""
        onTriggered: Hints.show(root.target, root.text)
    }
    onIsWantedChanged: if (!isWanted) Hints.hide(target)
    onTextChanged: if (isWanted && !delay.running) Hints.show(target, text)
    Component.onDestruction: if (isWanted) Hints.hide(target)
}
