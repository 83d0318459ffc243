// The wizard of the first start, in place of the status page: three steps in view, and the way out.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

FocusScope {
    id: root

    required property var setup
    required property var steps
    required property var actions

    objectName: "firstRunSetup"

    ScrollView {
        id: scroll
        anchors.fill: parent
        anchors.bottomMargin: footer.height
        contentWidth: availableWidth

        ColumnLayout {
            readonly property int column: Math.min(640, scroll.availableWidth - 2 * Theme.margin)

            x: Math.max(Theme.margin, (scroll.availableWidth - column) / 2)
            width: column
            spacing: 2 * Theme.grid

            ColumnLayout {
                Layout.topMargin: 2 * Theme.margin
                Layout.bottomMargin: Theme.grid
                spacing: Theme.inset
                Text {
                    Layout.fillWidth: true
                    text: root.setup.title
                    color: Theme.primary
                    font.pixelSize: Theme.titleSize
                    font.weight: Font.DemiBold
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Text {
                    Layout.fillWidth: true
                    text: root.setup.subtitle
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
            Repeater {
                model: root.steps
                SetupStepView {
                    required property var model
                    Layout.fillWidth: true
                    step: model
                    onAct: root.actions.setupStep(model.key)
                }
            }
        }
    }

    Rectangle {
        id: footer
        anchors.bottom: parent.bottom
        width: parent.width
        height: 64
        color: Theme.window
        Rectangle {
            width: parent.width
            height: 1
            color: Theme.hairline
        }
        RowLayout {
            anchors.fill: parent
            anchors.leftMargin: Theme.margin
            anchors.rightMargin: Theme.margin
            ActionButton {
                objectName: "skipSetup"
                button: root.setup.skip
                onClicked: root.actions.finishSetup()
            }
            Item { Layout.fillWidth: true }
            ActionButton {
                objectName: "finishSetup"
                button: root.setup.done
                primary: true
                onClicked: root.actions.finishSetup()
            }
        }
    }
}
