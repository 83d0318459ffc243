// A value to read and to copy.
import QtQuick

Item {
    id: root

    required property var row

    implicitWidth: Math.ceil(measure.implicitWidth) + 1
    implicitHeight: words.height

    Text {
        id: measure
        visible: false
        text: root.row.value
        font: words.font
        textFormat: Text.PlainText
    }
    TextEdit {
        id: words
        width: parent.width
        text: root.row.value
        color: Theme.role(root.row.color)
        font.pixelSize: Theme.textSize
        textFormat: TextEdit.PlainText
        horizontalAlignment: root.row.stacked ? TextEdit.AlignLeft : TextEdit.AlignRight
        wrapMode: TextEdit.Wrap
        readOnly: true
        selectByMouse: true
        selectionColor: Theme.accent
        selectedTextColor: Theme.textOnAccent
        activeFocusOnTab: true
        onActiveFocusChanged: activeFocus ? selectAll() : deselect()

        Accessible.role: Accessible.StaticText
        Accessible.name: root.row.label + ": " + text
        Accessible.description: root.row.spokenHelp

        FocusRing { shown: words.activeFocus; radius: 5 }
    }
}
