// A date with its name.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property var pill

    spacing: 6

    Accessible.role: Accessible.StaticText
    Accessible.name: pill.label + ": " + pill.timestamp

    Symbol {
        name: root.pill.icon
        role: root.pill.iconColor
        size: 14
    }
    Text {
        text: root.pill.label
        color: Theme.secondary
        font.pixelSize: Theme.captionSize
    }
    Text {
        text: root.pill.timestamp
        color: Theme.role(root.pill.valueColor)
        font.pixelSize: Theme.captionSize
        font.weight: Font.Medium
    }
}
