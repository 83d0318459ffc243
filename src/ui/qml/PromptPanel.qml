// The prompt as a small window of its own, above the others.
import QtQuick
import QtQuick.Window

Window {
    id: window

    required property var bridge
    readonly property QtObject theme: Theme

    width: 480
    height: Math.ceil(view.implicitHeight)
    minimumWidth: 480
    maximumWidth: 480
    minimumHeight: height
    maximumHeight: height
    title: bridge.windowTitle
    color: Theme.window
    flags: Qt.Dialog | Qt.WindowTitleHint | Qt.CustomizeWindowHint | Qt.WindowStaysOnTopHint
           | (bridge.page.mayClose ? Qt.WindowCloseButtonHint : 0)

    // The model hides the panel, when the answer may do so.
    onClosing: event => {
        event.accepted = false
        window.bridge.close()
    }

    Shortcut {
        sequences: [StandardKey.Cancel, StandardKey.Close]
        onActivated: window.bridge.close()
    }

    PromptView {
        id: view
        anchors.fill: parent
        focus: true
        page: window.bridge.page
        rows: window.bridge.rows
        actions: window.bridge
    }
}
