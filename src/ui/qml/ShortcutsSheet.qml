// What the keys do, over the window. Escape closes it.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Sheet {
    id: root

    required property var sheet

    width: Math.min(Theme.scaled(480), parent ? parent.width - 2 * Theme.margin : 0)
    height: Math.min(implicitHeight, parent ? parent.height - 2 * Theme.margin : 0)
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside

    body: Component {
        ColumnLayout {
            spacing: Theme.grid
            Accessible.role: Accessible.Dialog
            Accessible.name: root.sheet.title

            Text {
                Layout.fillWidth: true
                text: root.sheet.title
                color: Theme.primary
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            ListView {
                id: lines
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.topMargin: Theme.grid
                implicitHeight: contentHeight
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                spacing: Theme.grid
                model: root.sheet.lines
                delegate: RowLayout {
                    required property var modelData
                    width: lines.width
                    spacing: 2 * Theme.grid
                    Accessible.role: Accessible.StaticText
                    Accessible.name: modelData.spokenText
                    Text {
                        Layout.preferredWidth: Theme.scaled(88)
                        Layout.alignment: Qt.AlignTop
                        text: parent.modelData.keys
                        color: Theme.primary
                        font.pixelSize: Theme.textSize
                        font.weight: Font.DemiBold
                        Accessible.ignored: true
                    }
                    Text {
                        Layout.fillWidth: true
                        text: parent.modelData.text
                        color: Theme.secondary
                        font.pixelSize: Theme.textSize
                        wrapMode: Text.Wrap
                        Accessible.ignored: true
                    }
                }
            }
            RowLayout {
                Layout.fillWidth: true
                Layout.topMargin: Theme.grid
                Item { Layout.fillWidth: true }
                ActionButton {
                    id: closeButton
                    objectName: "closeShortcuts"
                    button: root.sheet.close
                    primary: true
                    onClicked: root.close()
                    Connections {
                        target: root
                        function onOpened() { closeButton.forceActiveFocus(Qt.PopupFocusReason) }
                    }
                }
            }
        }
    }
}
