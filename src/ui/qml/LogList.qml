// The log's entries, newest last. Only those in view exist, each placed within the view: the numbers of a long list's
// own places would be too coarse. Up, Down, Page Up, Page Down, Home and End walk them.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

FocusScope {
    id: root

    required property var logs
    required property string spokenName
    property int current: -1
    property real position: 0      // of the view's upper edge, in rows
    readonly property var chosen: logs.revision >= 0 ? logs.row(current) ?? null : null
    readonly property int lineHeight: 28
    readonly property real linesInView: height / lineHeight
    readonly property real lastPosition: Math.max(0, logs.count - linesInView)
    readonly property bool slim: width < 560

    function scrollTo(to) { position = Math.max(0, Math.min(to, lastPosition)) }
    function choose(index) {
        if (logs.count === 0) return
        current = Math.max(0, Math.min(index, logs.count - 1))
        if (current < position) scrollTo(current)
        else if (current + 1 > position + linesInView) scrollTo(current + 1 - linesInView)
    }

    activeFocusOnTab: true
    clip: true
    onLastPositionChanged: scrollTo(position)
    Component.onCompleted: scrollTo(lastPosition)
    Connections {
        target: root.logs
        function onRowsChanged() {
            root.current = -1
            root.scrollTo(root.lastPosition)
        }
    }

    Keys.onUpPressed: choose(current < 0 ? logs.count - 1 : current - 1)
    Keys.onDownPressed: choose(current < 0 ? logs.count - 1 : current + 1)
    Keys.onPressed: event => {
        const page = Math.max(1, Math.floor(linesInView) - 1)
        event.accepted = true
        if (event.key === Qt.Key_PageUp) choose((current < 0 ? logs.count : current) - page)
        else if (event.key === Qt.Key_PageDown) choose(current + page)
        else if (event.key === Qt.Key_Home) choose(0)
        else if (event.key === Qt.Key_End) choose(logs.count - 1)
        else if (event.matches(StandardKey.Copy)) logs.copy(current)
        else event.accepted = false
    }
    WheelHandler {
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: event => root.scrollTo(root.position - (event.pixelDelta.y !== 0
            ? event.pixelDelta.y / root.lineHeight : event.angleDelta.y / 40))
    }

    Accessible.role: Accessible.List
    Accessible.name: spokenName

    Repeater {
        model: Math.min(root.logs.count, Math.ceil(root.linesInView) + 1)
        Rectangle {
            id: line

            required property int index
            readonly property int at: Math.floor(root.position) + index
            readonly property var entry: root.logs.revision >= 0 ? root.logs.row(at) ?? null : null

            visible: entry !== null
            x: Theme.inset
            y: (at - root.position) * root.lineHeight
            width: root.width - 2 * Theme.inset
            height: root.lineHeight
            radius: 6
            color: at === root.current ? Theme.selected : over.hovered ? Theme.hover : "transparent"

            Accessible.role: Accessible.ListItem
            Accessible.name: entry ? entry.level + ", " + entry.time + ", " + entry.line : ""
            Accessible.selected: at === root.current
            Accessible.onPressAction: root.choose(at)

            HoverHandler { id: over }
            TapHandler {
                onTapped: {
                    root.choose(line.at)
                    root.forceActiveFocus(Qt.MouseFocusReason)
                }
            }
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 1.5 * Theme.grid
                anchors.rightMargin: 2 * Theme.grid
                spacing: 1.5 * Theme.grid
                Symbol {
                    name: line.entry ? line.entry.symbol : ""
                    role: line.entry ? line.entry.color : "secondary"
                    size: 16
                }
                Text {
                    Layout.preferredWidth: 128
                    text: line.entry ? line.entry.time : ""
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    textFormat: Text.PlainText
                }
                Text {
                    Layout.preferredWidth: 144
                    visible: !root.slim
                    text: line.entry ? line.entry.source : ""
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    elide: Text.ElideRight
                    textFormat: Text.PlainText
                }
                Text {
                    Layout.fillWidth: true
                    text: line.entry ? line.entry.line : ""
                    color: Theme.primary
                    font.pixelSize: Theme.textSize
                    elide: Text.ElideRight
                    textFormat: Text.PlainText
                }
            }
        }
    }

    ScrollBar {
        id: bar
        anchors.right: parent.right
        height: parent.height
        visible: size < 1
        orientation: Qt.Vertical
        policy: ScrollBar.AsNeeded
        minimumSize: 0.05
        size: root.logs.count > 0 ? Math.min(1, root.linesInView / root.logs.count) : 1
        position: root.lastPosition > 0 ? root.position / root.logs.count : 0
        onPositionChanged: if (pressed) root.scrollTo(position * root.logs.count)
        contentItem: Rectangle {
            implicitWidth: 6
            radius: 3
            color: Theme.outline
        }
    }
}
