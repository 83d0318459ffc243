// The install confirmation as a small window of its own, above the others. Closing it is a No.
import QtQuick
import QtQuick.Window

Window {
    id: window

    required property var bridge
    readonly property QtObject theme: Theme

    width: Theme.scaled(480)
    height: Math.max(220, Math.ceil(view.implicitHeight) + 2 * Theme.margin)
    minimumWidth: Theme.scaled(440)
    maximumWidth: Theme.scaled(600)
    minimumHeight: height
    maximumHeight: height
    title: bridge.windowTitle
    color: Theme.window
    flags: Qt.Dialog | Qt.WindowTitleHint | Qt.CustomizeWindowHint | Qt.WindowStaysOnTopHint
           | Qt.WindowCloseButtonHint

    onClosing: event => {
        event.accepted = false
        window.bridge.decline()
    }

    Shortcut {
        sequences: [StandardKey.Cancel, StandardKey.Close]
        onActivated: window.bridge.decline()
    }

    ConfirmationView {
        id: view
        anchors.fill: parent
        anchors.margins: Theme.margin
        visible: window.bridge.page.visible
        page: window.bridge.page
        onAccepted: window.bridge.accept()
        onDeclined: window.bridge.decline()
    }
}
