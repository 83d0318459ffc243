// What the keys do, over the window. Escape closes it.
import QtQuick
import QtQuick.Controls as Controls
import QtQuick.Controls.Basic
import QtQuick.Layouts

Dialog {
    id: root

    required property var sheet

    parent: Controls.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(Theme.scaled(480), parent ? parent.width - 2 * Theme.margin : 0)
    height: Math.min(implicitHeight, parent ? parent.height - 2 * Theme.margin : 0)
    padding: Theme.margin
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    onOpened: closeButton.forceActiveFocus(Qt.PopupFocusReason)

    Controls.Overlay.modal: Rectangle { color: "#66000000" }
    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; to: 0; duration: Theme.motion }
    }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.card
        border.width: 1
        border.color: Theme.outline
    }

    contentItem: ColumnLayout {
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
            }
        }
    }
}
