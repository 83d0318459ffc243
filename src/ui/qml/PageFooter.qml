// What runs now, and the last thing the program has to say. Its line keeps its place when there is nothing.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property var work
    required property var message

    spacing: Theme.grid

    component Line: RowLayout {
        id: one

        property var line
        property alias lines: words.maximumLineCount

        visible: one.line.text !== ""
        spacing: 6
        Symbol {
            visible: one.line.symbol !== ""
            Layout.alignment: Qt.AlignTop
            name: one.line.symbol
            role: one.line.color
            size: 16
        }
        Text {
            id: words
            Layout.fillWidth: true
            text: one.line.text
            color: Theme.role(one.line.color)
            font.pixelSize: Theme.textSize
            wrapMode: Text.Wrap
            elide: Text.ElideRight
            // Told without interrupting what is being read.
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    Line {
        Layout.maximumWidth: implicitWidth
        Layout.alignment: Qt.AlignTop
        line: root.work
        lines: 1
    }
    Line {
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
