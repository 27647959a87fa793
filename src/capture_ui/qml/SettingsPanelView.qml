import QtQuick
import QtQuick.Templates as T
import Keldra.UiKit

/// All settings of the recorder. On a screen that is too low for them they scroll.
PanelGround {
    id: root

    required property var panel

    onCancelled: panel.close()

    Flickable {
        id: scroll

        /// Brings the control that the keyboard has reached into sight.
        function reveal(item) {
            if (!item)
                return;
            const top = item.mapToItem(sections, 0, 0).y;
            if (top < contentY || top + item.height > contentY + height)
                contentY = Math.max(0, Math.min(contentHeight - height, top - height / 3));
        }

        anchors { fill: parent; margins: 1; topMargin: 12; bottomMargin: 10 }
        contentHeight: sections.height
        clip: contentHeight > height
        // Drags belong to the controls and to the panel; the wheel and the mark scroll.
        interactive: false
        T.ScrollBar.vertical: ScrollMark {}

        SettingsSections {
            id: sections
            x: 16
            width: scroll.width - 32
            panel: root.panel
        }
    }
    WheelHandler {
        onWheel: event => scroll.contentY = Math.max(0, Math.min(scroll.contentHeight - scroll.height,
                                                                   scroll.contentY - event.angleDelta.y / 2))
    }
    Connections {
        target: root.Window.window
        function onActiveFocusItemChanged() { scroll.reveal(root.Window.activeFocusItem) }
    }
}
