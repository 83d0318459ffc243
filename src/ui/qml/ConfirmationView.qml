// "Install updates?", with the countdown that answers for who does not.
import QtQuick
import QtQuick.Layouts

ColumnLayout {
    id: root

    required property var page
    signal accepted()
    signal declined()

    spacing: 2 * Theme.grid
    Accessible.role: Accessible.Dialog
    Accessible.name: page.title
    Accessible.description: page.text

    function takeFocus() { if (visible) yes.forceActiveFocus(Qt.PopupFocusReason) }
    onVisibleChanged: takeFocus()
    Component.onCompleted: takeFocus()

    RowLayout {
        Layout.fillWidth: true
        spacing: 2 * Theme.grid
        Symbol {
            Layout.alignment: Qt.AlignTop
            name: root.page.symbol
            role: "accent"
            size: 40
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: Theme.inset
            Text {
                Layout.fillWidth: true
                text: root.page.title
                color: Theme.primary
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            Text {
                Layout.fillWidth: true
                text: root.page.text
                color: Theme.secondary
                font.pixelSize: Theme.textSize
                wrapMode: Text.Wrap
            }
        }
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.grid
        Symbol { name: "timer" }
        Text {
            Layout.fillWidth: true
            objectName: "confirmationCountdown"
            text: root.page.countdown
            color: Theme.secondary
            font.pixelSize: Theme.textSize
            wrapMode: Text.Wrap
        }
    }
    Item { Layout.fillHeight: true }
    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.grid
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "confirmationNo"
            button: root.page.no
            onClicked: root.declined()
        }
        ActionButton {
            id: yes
            objectName: "confirmationYes"
            button: root.page.yes
            primary: true
            onClicked: root.accepted()
        }
    }
}
