// A date with its name.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: root

    required property var pill
    property bool slim: false

    implicitWidth: line.implicitWidth + 20
    implicitHeight: Theme.scaled(slim ? 20 : 26)
    radius: height / 2
    color: Theme.sidebar

    Accessible.role: Accessible.StaticText
    Accessible.name: pill.label + ": " + pill.timestamp

    RowLayout {
        id: line
        anchors.centerIn: parent
        spacing: 6
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
}
