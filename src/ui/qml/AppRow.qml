// One application of the list.
import QtQuick
import QtQuick.Layouts

Item {
    id: root

    required property string key
    required property string name
    required property string spokenText
    required property string monogram
    required property string iconBundle
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
    required property var whyButton
    required property var why
    required property int index

    // The keyboard is on this row; only its buttons are then in the Tab order.
    property bool current: false
    signal updateRequested(string key)
    signal recheckRequested(string key)
    signal historyToggled(string key)
    signal whyToggled(string key)
    signal copyRequested(string text)

    readonly property int textStart: 2 * Theme.grid + Theme.iconSize + 1.5 * Theme.grid
    readonly property int buttonFocus: current ? Qt.TabFocus : Qt.NoFocus
    readonly property bool focused: current && ListView.view !== null && ListView.view.activeFocus

    implicitHeight: Theme.rowHeight + (why.visible ? explanation.height + 2 * Theme.grid : 0)
                    + (isExpanded ? history.height + 2 * Theme.grid : 0)

    Accessible.role: Accessible.ListItem
    Accessible.name: spokenText

    HoverHandler { id: hover }

    Rectangle {
        anchors.fill: parent
        color: root.focused ? Theme.selected
             : hover.hovered ? Theme.hover : "transparent"
    }
    Rectangle {
        visible: root.index > 0
        x: root.textStart
        width: root.width - x
        height: 1
        color: Theme.hairline
    }

    Rectangle {
        visible: root.focused
        width: 3
        height: root.height
        color: Theme.accentText
    }

    RowLayout {
        objectName: "rowParts"
        x: 2 * Theme.grid
        width: root.width - 4 * Theme.grid
        height: Theme.rowHeight
        spacing: 1.5 * Theme.grid

        AppIcon {
            bundle: root.iconBundle
            monogram: root.monogram
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 3
            TwoTexts {
                first.objectName: "name"
                first.text: root.name
                first.font.weight: Font.Medium
                second.text: root.versionText
                second.color: Theme.secondary
            }
            TwoTexts {
                visible: root.progressText === ""
                first.text: root.statusText
                first.color: Theme.role(root.statusColor)
                first.font.pixelSize: Theme.captionSize
                second.text: root.failureText
                second.color: Theme.red
                second.font.pixelSize: Theme.captionSize
            }
            ElidedText {
                Layout.fillWidth: true
                visible: root.progressText !== ""
                text: root.progressText
                color: Theme.accentText
                font.pixelSize: Theme.captionSize
                font.weight: Font.Medium
            }
        }
        Item {
            implicitWidth: Theme.scaled(20)
            implicitHeight: implicitWidth
            visible: root.showsStatusIcon
            Accessible.role: Accessible.Graphic
            Accessible.name: root.statusIconHelp
            Symbol {
                anchors.fill: parent
                name: root.statusIcon
                role: root.statusIconColor
                size: 20
            }
            HoverHandler { id: iconHover }
            Hint {
                text: root.statusIconHelp
                wanted: iconHover.hovered
            }
        }
        Item {
            implicitWidth: 3 * Theme.controlHeight + 2 * Theme.inset
            implicitHeight: Theme.controlHeight
            Row {
                anchors.right: parent.right
                spacing: Theme.inset
                IconButton {
                    objectName: "recheck"
                    visible: root.recheck.visible
                    enabled: root.recheck.enabled
                    focusPolicy: root.buttonFocus
                    symbol: "arrow.clockwise.circle.fill"
                    role: "orange"
                    text: root.recheck.text
                    help: root.recheck.help
                    Accessible.name: root.recheck.text + " " + root.name
                    onClicked: root.recheckRequested(root.key)
                }
                IconButton {
                    objectName: "update"
                    visible: root.update.visible
                    enabled: root.update.enabled
                    focusPolicy: root.buttonFocus
                    symbol: "arrow.down.circle.fill"
                    role: "accent"
                    text: root.update.text
                    help: root.update.help
                    Accessible.name: root.update.text + " " + root.name
                    onClicked: root.updateRequested(root.key)
                }
                IconButton {
                    objectName: "why"
                    focusPolicy: root.buttonFocus
                    symbol: "questionmark.circle"
                    role: root.why.visible ? "accent" : "secondary"
                    text: root.whyButton.text
                    help: root.whyButton.help
                    Accessible.name: root.whyButton.text + " " + root.name
                    onClicked: root.whyToggled(root.key)
                }
                IconButton {
                    objectName: "history"
                    focusPolicy: root.buttonFocus
                    symbol: "clock.arrow.circlepath"
                    role: root.isExpanded ? "accent" : "secondary"
                    help: root.expanderHelp
                    Accessible.name: root.expanderHelp
                    onClicked: root.historyToggled(root.key)
                }
            }
        }
    }

    Loader {
        id: explanation
        active: root.why.visible
        x: root.textStart
        y: Theme.rowHeight
        width: root.width - x - 2 * Theme.grid
        height: item ? item.implicitHeight : 0
        sourceComponent: WhyLines {
            width: explanation.width
            why: root.why
            onCopy: text => root.copyRequested(text)
        }
    }

    Loader {
        id: history
        active: root.isExpanded
        x: root.textStart
        y: Theme.rowHeight + (root.why.visible ? explanation.height + 2 * Theme.grid : 0)
        width: root.width - x - 2 * Theme.grid
        height: item ? item.implicitHeight : 0
        sourceComponent: HistoryLines {
            width: history.width
            receiptsTitle: root.receiptsTitle
            receiptsEmptyText: root.receiptsEmptyText
            receipts: root.receipts
            eventsTitle: root.eventsTitle
            events: root.events
        }
    }
}
