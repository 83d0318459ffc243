// The prompt inside a window that stands already. Escape closes it where it may be closed.
import QtQuick

Sheet {
    id: root

    required property var bridge
    property string host: "dashboard"
    readonly property bool wanted: bridge.page.visible && bridge.page.host === host

    width: parent ? Math.min(implicitWidth, parent.width - 2 * Theme.grid) : implicitWidth
    height: Math.min(implicitHeight, parent ? parent.height - 2 * Theme.grid : implicitHeight)
    padding: 0
    color: Theme.window
    visible: wanted

    body: Component {
        PromptView {
            focus: true
            page: root.bridge.page
            rows: root.bridge.rows
            actions: root.bridge
            Keys.onEscapePressed: cancel()
        }
    }
}
