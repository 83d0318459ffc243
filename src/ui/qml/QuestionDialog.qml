// A question over a window, with its two answers. Escape is a No.
import QtQuick
import QtQuick.Layouts

Sheet {
    id: root

    required property string question
    required property string text
    required property var yes   // the page's buttons
    required property var no
    signal answered(bool yes)

    width: Math.min(Theme.scaled(400), parent ? parent.width - 2 * Theme.margin : 0)

    body: Component {
        ColumnLayout {
            spacing: Theme.grid
            Keys.onEscapePressed: root.answered(false)
            Accessible.role: Accessible.Dialog
            Accessible.name: root.question
            Accessible.description: root.text

            Text {
                Layout.fillWidth: true
                text: root.question
                color: Theme.primary
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            Text {
                Layout.fillWidth: true
                text: root.text
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
                    id: noButton
                    objectName: "answerNo"
                    button: root.no
                    onClicked: root.answered(false)
                    Connections {
                        target: root
                        function onOpened() { noButton.forceActiveFocus(Qt.PopupFocusReason) }
                    }
                }
                ActionButton {
                    objectName: "answerYes"
                    button: root.yes
                    primary: true
                    onClicked: root.answered(true)
                }
            }
        }
    }
}
