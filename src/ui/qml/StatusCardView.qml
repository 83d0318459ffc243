// One of the three counts.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: root

    required property var card

    property bool slim: false

    implicitHeight: slim ? 72 : 88
    radius: Theme.radius
    color: Theme.card
    border.width: 1
    border.color: Theme.hairline

    Accessible.role: Accessible.StaticText
    Accessible.name: card.title + ": " + card.value

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: root.slim ? 1.5 * Theme.grid : 2 * Theme.grid
        spacing: Theme.inset

        RowLayout {
            spacing: Theme.grid
            Symbol {
                name: root.card.icon
                role: root.card.color
                size: 18
            }
            Text {
                Layout.fillWidth: true
                text: root.card.title
                color: Theme.secondary
                font.pixelSize: Theme.textSize
                elide: Text.ElideRight
            }
        }
        Text {
            Layout.fillWidth: true
            text: root.card.value
            color: root.card.isPlaceholder ? Theme.secondary : Theme.primary
            font.pixelSize: root.slim ? 22 : 28
            font.weight: Font.DemiBold
        }
    }
}
