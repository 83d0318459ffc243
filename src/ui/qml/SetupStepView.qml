// One step of the wizard: its number or check mark, what it is for, and what can be done.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: root

    required property var step
    signal act()

    readonly property bool complete: step.state === "complete"
    readonly property bool running: step.state === "inProgress"

    implicitHeight: Math.max(72, line.implicitHeight + 4 * Theme.grid)
    radius: Theme.radius
    color: Theme.card
    border.width: 1
    border.color: running ? Theme.accentText : Theme.hairline

    Accessible.role: Accessible.ListItem
    Accessible.name: step.spokenText

    RowLayout {
        id: line
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.margins: 2 * Theme.grid
        spacing: 2 * Theme.grid

        Item {
            Layout.preferredWidth: 32
            Layout.preferredHeight: 32
            Symbol {
                anchors.centerIn: parent
                visible: root.complete
                name: "checkmark.circle.fill"
                role: "green"
                size: 28
            }
            Rectangle {
                anchors.centerIn: parent
                visible: !root.complete
                width: 28
                height: 28
                radius: 14
                color: root.running ? Theme.accent : Theme.monogram
                Text {
                    anchors.centerIn: parent
                    text: root.step.number
                    color: root.running ? Theme.textOnAccent : Theme.secondary
                    font.pixelSize: Theme.textSize
                    font.weight: Font.DemiBold
                }
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: Theme.inset
            Text {
                Layout.fillWidth: true
                text: root.step.title
                color: Theme.primary
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            Text {
                Layout.fillWidth: true
                text: root.step.description
                color: Theme.secondary
                font.pixelSize: Theme.textSize
                wrapMode: Text.Wrap
            }
        }
        ActionButton {
            objectName: "step:" + root.step.key
            button: root.step.control
            primary: true
            onClicked: root.act()
        }
    }
}
