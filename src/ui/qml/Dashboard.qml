// The main window: sidebar and page.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

ApplicationWindow {
    id: window

    required property var bridge
    readonly property QtObject theme: Theme

    width: 920
    height: 680
    minimumWidth: 640
    minimumHeight: 480
    title: bridge.windowTitle
    color: Theme.window

    Shortcut {
        sequences: [StandardKey.Refresh, "Ctrl+R"]
        enabled: window.bridge.page.check.enabled
        onActivated: window.bridge.checkForUpdates()
    }
    Shortcut {
        sequences: [StandardKey.Find]
        onActivated: page.focusFilter()
    }
    Shortcut {
        sequences: [StandardKey.Close]
        onActivated: window.close()
    }

    Shortcut {
        sequences: [StandardKey.Preferences, "Ctrl+,"]
        enabled: window.bridge.settingsTitle !== ""
        onActivated: window.bridge.openSettings()
    }

    readonly property bool compact: width < 760

    PromptOverlay {
        objectName: "promptOverlay"
        bridge: window.bridge.prompt
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillHeight: true
            Layout.preferredWidth: window.compact ? 48 : 176
            color: Theme.sidebar

            ColumnLayout {
                anchors.fill: parent
                anchors.margins: Theme.grid
                anchors.topMargin: Theme.margin
                spacing: Theme.inset

                Rectangle {
                    Layout.fillWidth: true
                    implicitHeight: 32
                    radius: 7
                    color: Theme.selected
                    RowLayout {
                        anchors.fill: parent
                        anchors.leftMargin: 12
                        spacing: Theme.grid
                        Symbol {
                            name: "gauge"
                            role: "accent"
                            size: 18
                        }
                        Text {
                            Layout.fillWidth: true
                            visible: !window.compact
                            text: window.bridge.statusSectionTitle
                            color: Theme.primary
                            font.pixelSize: Theme.textSize
                            font.weight: Font.Medium
                        }
                    }
                }
                Item { Layout.fillHeight: true }
                IconButton {
                    objectName: "openSettings"
                    visible: window.bridge.settingsTitle !== ""
                    symbol: "gearshape"
                    text: window.bridge.settingsTitle
                    help: text
                    onClicked: window.bridge.openSettings()
                }
                RowLayout {
                    Layout.fillWidth: true
                    Layout.margins: Theme.inset
                    spacing: Theme.grid
                    Symbol {
                        name: window.bridge.page.statusSymbol
                        size: 20
                    }
                    Text {
                        Layout.fillWidth: true
                        visible: !window.compact
                        text: window.bridge.page.statusLine
                        color: Theme.secondary
                        font.pixelSize: Theme.captionSize
                        wrapMode: Text.Wrap
                    }
                }
            }
            Rectangle {
                anchors.right: parent.right
                width: 1
                height: parent.height
                color: Theme.hairline
            }
        }

        StatusPage {
            id: page
            visible: !window.bridge.setup.visible
            Layout.fillWidth: true
            Layout.fillHeight: true
            page: window.bridge.page
            rows: window.bridge.rows
            actions: window.bridge
        }
        Loader {
            active: window.bridge.setup.visible
            visible: active
            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: FirstRunSetup {
                setup: window.bridge.setup
                steps: window.bridge.setupSteps
                actions: window.bridge
            }
        }
    }
}
