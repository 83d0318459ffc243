// Asks before the helper is taken away and registered anew. Escape and Cancel change nothing.
import QtQuick
import QtQuick.Controls as Controls
import QtQuick.Controls.Basic
import QtQuick.Layouts

Dialog {
    id: root

    required property var banner
    signal confirmed()

    function answerWith(yes) {
        close()
        if (yes) confirmed()
    }

    parent: Controls.Overlay.overlay
    anchors.centerIn: parent
    width: 400
    padding: Theme.margin
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    onOpened: cancel.forceActiveFocus(Qt.PopupFocusReason)

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
        Accessible.name: root.banner.resetConfirmationTitle
        Accessible.description: root.banner.resetConfirmationText

        Text {
            Layout.fillWidth: true
            text: root.banner.resetConfirmationTitle
            color: Theme.primary
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
        }
        Text {
            Layout.fillWidth: true
            text: root.banner.resetConfirmationText
            color: Theme.secondary
            font.pixelSize: Theme.textSize
            lineHeight: 1.25
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.topMargin: 2 * Theme.grid
            spacing: Theme.grid
            Item { Layout.fillWidth: true }
            ActionButton {
                id: cancel
                objectName: "cancelReset"
                button: root.banner.cancelReset
                onClicked: root.answerWith(false)
            }
            ActionButton {
                objectName: "confirmReset"
                button: root.banner.confirmReset
                primary: true
                onClicked: root.answerWith(true)
            }
        }
    }
}
