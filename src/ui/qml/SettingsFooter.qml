// What was saved or waits to be, and Save.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: root

    required property var page
    signal saved()

    implicitHeight: line.implicitHeight + 3 * Theme.grid
    color: Theme.sidebar

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.hairline
    }
    RowLayout {
        id: line
        anchors.fill: parent
        anchors.leftMargin: Theme.margin
        anchors.rightMargin: Theme.margin
        spacing: Theme.grid

        Rectangle {
            visible: root.page.hasEdits
            implicitWidth: Theme.grid
            implicitHeight: Theme.grid
            radius: Theme.inset
            color: Theme.accentText
        }
        Text {
            Layout.fillWidth: true
            objectName: "savedText"
            text: root.page.savedText
            color: root.page.hasEdits ? Theme.primary : Theme.secondary
            font.pixelSize: Theme.textSize
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        ActionButton {
            objectName: "save"
            button: root.page.save
            primary: true
            onClicked: root.saved()
        }
    }
}
