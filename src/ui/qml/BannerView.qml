// A strip above the cards that says what stands in the way or what is new, with its buttons.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: root

    required property string symbol
    required property string role
    default property alias buttons: buttonRow.data
    property alias texts: textColumn.data

    implicitHeight: content.implicitHeight + 3 * Theme.grid
    radius: Theme.radius
    color: Theme.card
    border.width: 1
    border.color: Theme.role(role)

    RowLayout {
        id: content
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: 2 * Theme.grid
        anchors.rightMargin: 1.5 * Theme.grid
        spacing: 1.5 * Theme.grid

        Symbol {
            Layout.alignment: Qt.AlignVCenter
            name: root.symbol
            role: root.role
            size: 24
        }
        ColumnLayout {
            id: textColumn
            Layout.fillWidth: true
            spacing: Theme.inset
        }
        RowLayout {
            id: buttonRow
            spacing: Theme.grid
        }
    }
}
