// The prompt inside a window that stands already. Escape closes it where it may be closed.
import QtQuick
import QtQuick.Controls as Controls
import QtQuick.Controls.Basic

Popup {
    id: root

    required property var bridge
    property string host: "dashboard"
    readonly property bool wanted: bridge.page.visible && bridge.page.host === host

    parent: Controls.Overlay.overlay
    anchors.centerIn: parent
    width: 480
    height: Math.min(view.implicitHeight, parent ? parent.height - 2 * Theme.grid : view.implicitHeight)
    padding: 0
    modal: true
    focus: true
    closePolicy: Popup.NoAutoClose
    visible: wanted

    Controls.Overlay.modal: Rectangle { color: "#66000000" }
    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; to: 0; duration: Theme.motion }
    }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.window
        border.width: 1
        border.color: Theme.outline
    }
    contentItem: PromptView {
        id: view
        focus: true
        page: root.bridge.page
        rows: root.bridge.rows
        actions: root.bridge
        Keys.onEscapePressed: cancel()
    }
}
