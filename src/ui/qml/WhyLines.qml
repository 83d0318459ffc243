// Why an application is where it is: the verdict, what comes next, and the rules in their order.
import QtQuick
import QtQuick.Layouts

ColumnLayout {
    id: root

    required property var why
    signal copy(string text)

    spacing: 6

    component Words: Text {
        Layout.fillWidth: true
        color: Theme.primary
        font.pixelSize: Theme.captionSize
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.grid
        Words {
            text: root.why.title !== "" ? root.why.title + " — " + root.why.reason : root.why.reason
            font.weight: Font.DemiBold
        }
        ActionButton {
            objectName: "copyWhy"
            Layout.alignment: Qt.AlignTop
            button: root.why.copy
            onClicked: root.copy(root.why.copyText)
        }
    }
    Words { text: root.why.prompt }
    Words { text: root.why.next }

    Repeater {
        model: root.why.lines
        RowLayout {
            id: line

            required property var modelData

            Layout.fillWidth: true
            Layout.topMargin: 1
            spacing: Theme.grid
            Symbol {
                Layout.alignment: Qt.AlignTop
                name: line.modelData.symbol
                role: line.modelData.color
                size: 14
            }
            Text {
                Layout.alignment: Qt.AlignTop
                Layout.preferredWidth: 150
                text: line.modelData.text
                color: line.modelData.color === "secondary" ? Theme.secondary : Theme.primary
                font.pixelSize: Theme.captionSize
                wrapMode: Text.Wrap
            }
            Words {
                Layout.alignment: Qt.AlignTop
                text: line.modelData.detail
            }
            Text {
                Layout.alignment: Qt.AlignTop
                Layout.maximumWidth: root.width * 0.4
                text: line.modelData.source
                color: Theme.secondary
                font.pixelSize: Theme.captionSize
                wrapMode: Text.WrapAnywhere
                horizontalAlignment: Text.AlignRight
            }
        }
    }
}
