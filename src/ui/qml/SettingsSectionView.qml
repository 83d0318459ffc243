// A section: its title, its warning, and a card of its controls.
import QtQuick
import QtQuick.Layouts

Column {
    id: root

    required property string key
    required property string title
    required property string warning
    required property var actions

    spacing: Theme.grid

    Text {
        width: parent.width
        visible: text !== ""
        text: root.title
        color: Theme.primary
        font.pixelSize: Theme.headingSize
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    MessageLine {
        width: parent.width
        line: ({ text: root.warning, symbol: "exclamationmark.triangle.fill", color: "orange" })
        lines: 100
    }
    Rectangle {
        width: parent.width
        height: rows.height + 2
        radius: Theme.radius
        color: Theme.card
        border.width: 1
        border.color: Theme.hairline

        Column {
            id: rows
            x: 1
            y: 1
            width: parent.width - 2
            Repeater {
                model: root.actions.controls(root.key)
                SettingsRow {
                    width: rows.width
                    actions: root.actions
                }
            }
        }
    }
}
