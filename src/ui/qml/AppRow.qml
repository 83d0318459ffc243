// One application of the list.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Item {
    id: root

    required property string key
    required property string name
    required property string iconPath
    required property string versionText
    required property string statusText
    required property string statusColor
    required property string failureText
    required property bool showsStatusIcon
    required property string statusIcon
    required property string statusIconColor
    required property string statusIconHelp
    required property var recheck
    required property var update
    required property string progressText
    required property bool isExpanded
    required property string expanderHelp
    required property string receiptsTitle
    required property string receiptsEmptyText
    required property var receipts
    required property string eventsTitle
    required property var events
    required property int index

    signal updateRequested(string key)
    signal recheckRequested(string key)
    signal historyToggled(string key)

    readonly property int textStart: 2 * Theme.grid + 32 + 12

    implicitHeight: Theme.rowHeight + (isExpanded ? history.implicitHeight + 2 * Theme.grid : 0)

    Accessible.role: Accessible.ListItem
    Accessible.name: name + ", " + versionText + ", " + statusText
                     + (failureText !== "" ? ", " + failureText : "")

    HoverHandler { id: hover }

    Rectangle {
        anchors.fill: parent
        color: hover.hovered ? Theme.hover : "transparent"
    }
    Rectangle {
        visible: root.index > 0
        x: root.textStart
        width: root.width - x
        height: 1
        color: Theme.hairline
    }

    RowLayout {
        id: line
        x: 2 * Theme.grid
        width: root.width - 4 * Theme.grid + Theme.grid
        height: Theme.rowHeight
        spacing: 12

        Rectangle {
            Layout.preferredWidth: 32
            Layout.preferredHeight: 32
            radius: 8
            color: Theme.sidebar
            Text {
                anchors.centerIn: parent
                text: root.name.length > 0 ? String.fromCodePoint(root.name.codePointAt(0)).toUpperCase() : ""
                color: Theme.secondary
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            RowLayout {
                spacing: Theme.grid
                Text {
                    Layout.maximumWidth: line.width * 0.5
                    text: root.name
                    color: Theme.primary
                    font.pixelSize: Theme.textSize
                    font.weight: Font.Medium
                    elide: Text.ElideRight
                }
                Text {
                    Layout.fillWidth: true
                    text: root.versionText
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    elide: Text.ElideRight
                }
            }
            RowLayout {
                spacing: Theme.grid
                Text {
                    Layout.maximumWidth: line.width * 0.6
                    visible: text !== ""
                    text: root.progressText !== "" ? root.progressText : root.statusText
                    color: root.progressText !== "" ? Theme.accentText : Theme.role(root.statusColor)
                    font.pixelSize: Theme.captionSize
                    elide: Text.ElideRight
                }
                Text {
                    Layout.fillWidth: true
                    visible: root.failureText !== "" && root.progressText === ""
                    text: root.failureText
                    color: Theme.red
                    font.pixelSize: Theme.captionSize
                    elide: Text.ElideRight
                }
            }
        }
        Item {
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
            visible: root.showsStatusIcon
            Symbol {
                anchors.fill: parent
                name: root.statusIcon
                role: root.statusIconColor
                size: 20
            }
            HoverHandler { id: iconHover }
            ToolTip.text: root.statusIconHelp
            ToolTip.visible: root.statusIconHelp !== "" && iconHover.hovered
            ToolTip.delay: 300
        }
        RowLayout {
            Layout.preferredWidth: 68
            spacing: Theme.inset
            Item { Layout.fillWidth: true }
            IconButton {
                visible: root.recheck.visible
                enabled: root.recheck.enabled
                symbol: "arrow.clockwise.circle.fill"
                role: "orange"
                text: root.recheck.text
                help: root.recheck.help
                onClicked: root.recheckRequested(root.key)
            }
            IconButton {
                visible: root.update.visible
                enabled: root.update.enabled
                symbol: "arrow.down.circle.fill"
                role: "accent"
                text: root.update.text
                help: root.update.help
                onClicked: root.updateRequested(root.key)
            }
            IconButton {
                symbol: "clock.arrow.circlepath"
                role: root.isExpanded ? "accent" : "secondary"
                help: root.expanderHelp
                onClicked: root.historyToggled(root.key)
            }
        }
    }

    HistoryLines {
        id: history
        visible: root.isExpanded
        x: root.textStart
        y: Theme.rowHeight
        width: root.width - x - 2 * Theme.grid
        receiptsTitle: root.receiptsTitle
        receiptsEmptyText: root.receiptsEmptyText
        receipts: root.receipts
        eventsTitle: root.eventsTitle
        events: root.events
    }
}
