// The prompt as a small window of its own, above the others.
import QtQuick
import QtQuick.Window

Window {
    id: window

    required property var bridge
    readonly property QtObject theme: Theme
    readonly property int wantedHeight: Math.ceil(view.implicitHeight)

    width: Theme.scaled(480)
    minimumWidth: width
    maximumWidth: width
    title: bridge.windowTitle
    color: Theme.window
    flags: Qt.Dialog | Qt.WindowTitleHint | Qt.CustomizeWindowHint | Qt.WindowStaysOnTopHint
           | (bridge.page.mayClose ? Qt.WindowCloseButtonHint : 0)

    // The limits first: a window manager holds a new height against those that it knows.
    function fit() {
        minimumHeight = wantedHeight
        maximumHeight = wantedHeight
        height = wantedHeight
    }
    onWantedHeightChanged: fit()
    Component.onCompleted: fit()

    // The model hides the panel, when the answer may do so.
    onClosing: event => {
        event.accepted = false
        window.bridge.close()
    }

    Shortcut {
        sequences: [StandardKey.Cancel]
        onActivated: view.cancel()
    }
    Shortcut {
        sequences: [StandardKey.Close]
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
