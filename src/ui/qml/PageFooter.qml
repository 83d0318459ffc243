// What runs now, and the last thing the program has to say. Its line keeps its place when there is nothing.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property var work
    required property var message

    spacing: Theme.grid

    MessageLine {
        Layout.maximumWidth: implicitWidth
        Layout.alignment: Qt.AlignTop
        line: root.work
        lines: 1
    }
    MessageLine {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignTop
        line: root.message
        lines: 3
    }
    Item {
        Layout.fillWidth: true
        visible: root.message.text === ""
    }
}
