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
    // Head, pills, filter and a row of the list.
    minimumHeight: Math.min(Math.max(480, Theme.scaled(420)), Screen.desktopAvailableHeight)
    title: bridge.windowTitle
    color: Theme.window

    readonly property bool showsLogs: bridge.selectedSection === "logs"

    Shortcut {
        sequences: [StandardKey.Refresh, "Ctrl+R"]
        enabled: window.showsLogs || window.bridge.page.check.enabled
        onActivated: window.showsLogs ? window.bridge.logs.refresh() : window.bridge.checkForUpdates()
    }
    Shortcut {
        sequences: [StandardKey.Find]
        onActivated: window.showsLogs ? logPage.item.focusSearch() : page.focusFilter()
    }
    Shortcut {
        sequence: "Ctrl+1"
        onActivated: window.bridge.selectedSection = "status"
    }
    Shortcut {
        sequence: "Ctrl+2"
        onActivated: window.bridge.selectedSection = "logs"
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

    Shortcut {
        sequences: [StandardKey.HelpContents, "Ctrl+?"]  // one for each press: two that fit are none
        onActivated: shortcuts.open()
    }
    ShortcutsSheet {
        id: shortcuts
        objectName: "shortcutsSheet"
        sheet: window.bridge.shortcuts
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

                Repeater {
                    model: window.bridge.sections
                    SidebarItem {
                        required property var modelData
                        Layout.fillWidth: true
                        objectName: "section-" + modelData.tag
                        section: modelData
                        compact: window.compact
                        checked: window.bridge.selectedSection === modelData.tag
                        onClicked: window.bridge.selectedSection = modelData.tag
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
            visible: !window.showsLogs && !window.bridge.setup.visible
            Layout.fillWidth: true
            Layout.fillHeight: true
            page: window.bridge.page
            rows: window.bridge.rows
            actions: window.bridge
        }
        Loader {
            active: window.bridge.setup.visible
            visible: active && !window.showsLogs
            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: FirstRunSetup {
                setup: window.bridge.setup
                steps: window.bridge.setupSteps
                actions: window.bridge
            }
        }
        Loader {
            id: logPage
            visible: window.showsLogs
            active: window.showsLogs || item !== null
            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: LogPage { logs: window.bridge.logs }
        }
    }
}
