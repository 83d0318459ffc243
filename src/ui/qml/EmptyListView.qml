// What stands in place of the list when there is nothing to list.
import QtQuick
import QtQuick.Layouts

ColumnLayout {
    id: root

    required property var empty
    signal check()
    signal showAll()

    spacing: Theme.grid

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.inset
        name: root.empty.symbol
        size: 40
    }
    Text {
        Layout.fillWidth: true
        text: root.empty.title
        color: Theme.primary
        font.pixelSize: Theme.headingSize
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
    }
    Text {
        Layout.fillWidth: true
        visible: text !== ""
        text: root.empty.text
        color: Theme.secondary
        font.pixelSize: Theme.textSize
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
    }
    ActionButton {
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.grid
        objectName: "emptyCheck"
        button: root.empty.check
        onClicked: root.check()
    }
    ActionButton {
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.grid
        objectName: "emptyShowAll"
        button: root.empty.showAll
        onClicked: root.showAll()
    }
}
