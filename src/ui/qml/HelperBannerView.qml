// What is missing before applications can be patched, and the way out.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: root

    required property var banner
    signal setUp()
    signal openSettings()
    signal reset()

    implicitHeight: content.implicitHeight + 3 * Theme.grid
    radius: Theme.radius
    color: Theme.card
    border.width: 1
    border.color: Theme.orange

    RowLayout {
        id: content
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.margins: 2 * Theme.grid
        spacing: 12

        Symbol {
            name: "exclamationmark.shield"
            role: "orange"
            size: 24
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: Theme.inset
            Repeater {
                model: [root.banner.helperLine, root.banner.installomatorLine].filter(line => line !== "")
                Text {
                    required property string modelData
                    Layout.fillWidth: true
                    text: modelData
                    color: Theme.primary
                    font.pixelSize: Theme.textSize
                    wrapMode: Text.Wrap
                }
            }
        }
        ActionButton {
            visible: root.banner.setUp.visible
            enabled: root.banner.setUp.enabled
            text: root.banner.setUp.text
            help: root.banner.setUp.help
            primary: true
            onClicked: root.setUp()
        }
        ActionButton {
            visible: root.banner.openSettings.visible
            enabled: root.banner.openSettings.enabled
            text: root.banner.openSettings.text
            help: root.banner.openSettings.help
            primary: true
            onClicked: root.openSettings()
        }
        ActionButton {
            visible: root.banner.reset.visible
            enabled: root.banner.reset.enabled
            text: root.banner.reset.text
            help: root.banner.reset.help
            onClicked: root.reset()
        }
    }
}
