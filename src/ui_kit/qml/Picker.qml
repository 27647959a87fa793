import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// A menu of names of which one is picked. An empty menu says so, and closes if it is open. What holds is bound to
/// `current`; a press asks for another by its id.
T.ComboBox {
    id: root

    property string text
    property string hint: text
    property var ids: []
    property int current: -1
    property string emptyText
    signal picked(string id)

    readonly property string shownText: count === 0 ? emptyText : current >= 0 ? model[current] : ""

    implicitHeight: 34
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    enabled: count > 0
    currentIndex: current
    Accessible.name: text + ": " + shownText
    Accessible.description: hint
    Keys.onReturnPressed: popup.open()
    Keys.onEnterPressed: popup.open()
    onCountChanged: if (count === 0) popup.close()
    // The choice is whatever the model says it is, also when it refuses.
    onActivated: index => {
        if (index >= 0 && index < ids.length)
            picked(ids[index]);
        currentIndex = Qt.binding(() => root.current);
    }

    property Hint hintShower: Hint {
        target: root
        text: root.hint
        isForPointer: false
    }

    background: Box {
        radius: Theme.controlRadius
        color: root.pressed || root.popup.visible ? Theme.fillPressed : root.hovered ? Theme.fillHovered : Theme.fill
        Behavior on color { ColorAnimation { duration: Theme.motion } }
        FocusRing { control: root }
    }
    contentItem: Label {
        leftPadding: 11
        rightPadding: 28
        font.pixelSize: 12
        text: root.shownText
        color: root.enabled ? Theme.text : Theme.secondaryText
    }
    indicator: Symbol {
        x: root.width - width - 9
        y: (root.height - height) / 2
        width: 15; height: 15
        visible: root.enabled
        name: "chevron.down"
        color: Theme.secondaryText
    }
    delegate: T.ItemDelegate {
        id: row
        required property int index
        required property string modelData
        width: ListView.view.width
        implicitHeight: 30
        hoverEnabled: true
        highlighted: root.highlightedIndex === index
        text: modelData
        Accessible.name: text
        contentItem: Label {
            leftPadding: 9
            rightPadding: 9
            text: row.text
            color: row.index === root.current ? Theme.accent : Theme.text
        }
        background: Box {
            radius: 7
            color: row.highlighted ? Theme.fillHovered : "transparent"
        }
    }
    popup: T.Popup {
        y: root.height + 4
        width: root.width
        height: Math.min(list.contentHeight, 180) + 10
        margins: 8
        padding: 5
        contentItem: ListView {
            id: list
            clip: true
            model: root.delegateModel
            currentIndex: root.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: ScrollMark {}
        }
        background: Box {
            radius: Theme.controlRadius
            color: Theme.menuGround
            border { width: 1; color: Theme.hairline }
        }
        enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
        exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion } }
    }
}
