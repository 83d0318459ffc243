// A line of small print below a control, with a symbol where it is not plain help. No line when it is empty.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property string text
    property string symbol
    property string role: "secondary"

    visible: text !== ""
    spacing: 6

    Symbol {
        visible: root.symbol !== ""
        Layout.alignment: Qt.AlignTop
        name: root.symbol
        role: root.role
        size: 14
    }
    Text {
        Layout.fillWidth: true
        text: root.text
        color: Theme.role(root.role)
        font.pixelSize: Theme.captionSize
        lineHeight: 1.2
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
