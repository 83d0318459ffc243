// The edge of what can be typed into or chosen from.
import QtQuick

Rectangle {
    id: root

    property bool hovered: false
    property bool focused: false
    property bool faulty: false

    radius: 7
    color: !enabled ? Theme.window : hovered ? Theme.hover : Theme.control
    border.width: 1
    border.color: faulty ? Theme.red : enabled ? Theme.outline : Theme.hairline
    FocusRing { shown: root.focused; radius: parent.radius + 3 }
}
