// The deferral prompt, in whatever surface shows it. The confirmation takes its place while it asks.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

FocusScope {
    id: root

    required property var page
    required property var rows
    required property var actions

    implicitWidth: Theme.scaled(480)
    implicitHeight: (page.confirmation.visible ? confirmation.implicitHeight : prompt.implicitHeight) + 2 * Theme.margin

    Accessible.role: Accessible.Dialog
    Accessible.name: page.title
    Accessible.description: page.subtitle

    // Escape: a No to the question, else the close button.
    function cancel() {
        if (page.confirmation.visible) actions.decline()
        else actions.close()
    }

    // Return is the default button's, whatever had the keyboard before the prompt or its question went.
    function takeFocus() {
        if (!visible || !standing || page.confirmation.visible) return
        defaultButton.forceActiveFocus(Qt.PopupFocusReason)
    }
    readonly property bool standing: page.visible
    readonly property Item defaultButton: page.deferIsPrimary ? defer : install
    onStandingChanged: takeFocus()
    onDefaultButtonChanged: takeFocus()
    onVisibleChanged: takeFocus()
    Component.onCompleted: takeFocus()

    ConfirmationView {
        id: confirmation
        anchors.fill: parent
        anchors.margins: Theme.margin
        visible: root.page.confirmation.visible
        page: root.page.confirmation
        onAccepted: root.actions.accept()
        onDeclined: root.actions.decline()
        onVisibleChanged: root.takeFocus()
    }

    ColumnLayout {
        id: prompt
        anchors.fill: parent
        anchors.margins: Theme.margin
        visible: !root.page.confirmation.visible
        spacing: 2 * Theme.grid

        RowLayout {
            Layout.fillWidth: true
            spacing: 2 * Theme.grid
            Symbol {
                Layout.alignment: Qt.AlignTop
                name: root.page.symbol
                role: root.page.symbolColor
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
                    text: root.page.subtitle
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    wrapMode: Text.Wrap
                }
                Text {
                    Layout.fillWidth: true
                    objectName: "explanation"
                    visible: text !== ""
                    text: root.page.explanation
                    color: Theme.red
                    font.pixelSize: Theme.textSize
                    wrapMode: Text.Wrap
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            // In a small window the list gives way, never the buttons.
            Layout.fillHeight: true
            Layout.maximumHeight: implicitHeight
            Layout.minimumHeight: Math.min(list.count, 1) * Theme.rowHeight + 2
            implicitHeight: Math.min(list.count, 4) * Theme.rowHeight + 2
            visible: list.count > 0
            radius: Theme.radius
            color: Theme.card
            border.width: 1
            border.color: Theme.hairline

            ListView {
                id: list
                objectName: "promptList"
                anchors.fill: parent
                anchors.margins: 1
                clip: true
                model: root.rows
                interactive: contentHeight > height
                boundsBehavior: Flickable.StopAtBounds
                activeFocusOnTab: interactive
                // No row can be chosen, so the keys move the view.
                keyNavigationEnabled: false
                function scroll(rows) {
                    contentY = Math.max(originY, Math.min(contentY + rows * Theme.rowHeight,
                                                          originY + contentHeight - height))
                }
                Keys.onUpPressed: scroll(-1)
                Keys.onDownPressed: scroll(1)
                Keys.onPressed: event => {
                    const rows = { [Qt.Key_PageUp]: -3, [Qt.Key_PageDown]: 3, [Qt.Key_Home]: -count, [Qt.Key_End]: count }[event.key]
                    if (rows === undefined) return
                    scroll(rows)
                    event.accepted = true
                }
                ScrollBar.vertical: ScrollBar { policy: list.interactive ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff }
                delegate: PromptRowView {
                    width: list.width
                    isLast: index === list.count - 1
                }
            }
            FocusRing { shown: list.activeFocus; radius: Theme.radius + 3 }
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: Theme.inset
            visible: root.page.pickerLabel !== "" || root.page.autoInstall !== "" || root.page.remaining !== ""

            RowLayout {
                visible: root.page.pickerLabel !== ""
                spacing: Theme.grid
                Text {
                    id: pickerLabel
                    text: root.page.pickerLabel
                    color: Theme.primary
                    font.pixelSize: Theme.textSize
                }
                ChoicePicker {
                    objectName: "reminderPicker"
                    Layout.preferredWidth: Theme.scaled(160)
                    options: root.page.options
                    selected: root.page.selectedOption
                    name: root.page.pickerLabel
                    onChosen: index => root.actions.select(options[index].minutes)
                }
            }
            Text {
                Layout.fillWidth: true
                Layout.leftMargin: pickerLabel.width + Theme.grid
                objectName: "reminderTime"
                visible: text !== ""
                text: root.page.reminderTime
                color: Theme.secondary
                font.pixelSize: Theme.captionSize
                wrapMode: Text.Wrap
            }
            Text {
                Layout.fillWidth: true
                Layout.topMargin: Theme.grid
                visible: text !== ""
                text: root.page.autoInstall
                color: Theme.secondary
                font.pixelSize: Theme.captionSize
                wrapMode: Text.Wrap
            }
            Text {
                Layout.fillWidth: true
                visible: text !== ""
                text: root.page.remaining
                color: Theme.secondary
                font.pixelSize: Theme.captionSize
                wrapMode: Text.Wrap
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.grid
            Symbol { name: "timer"; role: root.page.countdownColor }
            Text {
                Layout.fillWidth: true
                objectName: "countdown"
                text: root.page.countdown
                color: Theme.role(root.page.countdownColor)
                font.pixelSize: Theme.textSize
                wrapMode: Text.Wrap
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.grid
            Item { Layout.fillWidth: true }
            ActionButton {
                id: defer
                objectName: "defer"
                button: root.page.defer
                primary: root.page.deferIsPrimary
                onClicked: root.actions.defer()
            }
            ActionButton {
                id: install
                objectName: "install"
                button: root.page.install
                primary: !root.page.deferIsPrimary
                onClicked: root.actions.install()
            }
        }
    }
}
