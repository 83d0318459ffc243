// A line about what goes on, with its symbol. Stands only while it has something to say.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property var line
    property alias lines: words.maximumLineCount

    visible: line.text !== ""
    spacing: 6
    Symbol {
        visible: root.line.symbol !== ""
        Layout.alignment: Qt.AlignTop
        name: root.line.symbol
        role: root.line.color
        size: 16
    }
    Text {
        id: words
        Layout.fillWidth: true
        text: root.line.text
        color: Theme.role(root.line.color)
        font.pixelSize: Theme.textSize
        wrapMode: Text.Wrap
        elide: Text.ElideRight
        // Told without interrupting what is being read.
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
