// The log page: head with its actions, level and search, the entries, and the chosen one whole.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Item {
    id: root

    required property var logs     // the bridge
    readonly property var page: logs.page
    readonly property bool narrow: width < 640

    function focusSearch() {
        search.forceActiveFocus(Qt.ShortcutFocusReason)
        search.selectAll()
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: root.narrow ? 2 * Theme.grid : Theme.margin
        anchors.bottomMargin: 1.5 * Theme.grid
        spacing: 1.5 * Theme.grid

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.grid
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 2
                ElidedText {
                    Layout.fillWidth: true
                    text: root.page.title
                    font.pixelSize: Theme.titleSize
                    font.weight: Font.DemiBold
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Text {
                    id: path
                    objectName: "logPath"
                    Layout.fillWidth: true
                    text: root.page.pathStatus
                    color: Theme.secondary
                    font.pixelSize: Theme.captionSize
                    elide: Text.ElideMiddle
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                    Accessible.description: root.page.pathHelp
                    HoverHandler { id: overPath }
                    Hint {
                        text: root.page.pathStatus + "\n\n" + root.page.pathHelp
                        wanted: overPath.hovered
                    }
                }
            }
            ActionButton {
                objectName: "logRefresh"
                button: root.page.refresh
                onClicked: root.logs.refresh()
            }
            ActionButton {
                objectName: "logClear"
                button: root.page.clear
                onClicked: root.logs.clear()
            }
        }

        GridLayout {
            Layout.fillWidth: true
            columns: root.narrow ? 1 : 2
            columnSpacing: 1.5 * Theme.grid
            rowSpacing: Theme.grid
            RowLayout {
                spacing: Theme.grid
                Symbol {
                    name: root.page.filterSymbol
                    size: 18
                }
                FilterBar {
                    objectName: "logLevels"
                    segments: root.page.filters
                    onChosen: key => root.logs.setLevel(key)
                }
            }
            TextField {
                id: search
                objectName: "logSearch"
                Layout.fillWidth: true
                implicitHeight: 32
                leftPadding: 34
                rightPadding: 34
                text: root.page.searchText
                placeholderText: root.page.searchPrompt
                placeholderTextColor: Theme.secondary
                color: Theme.primary
                selectionColor: Theme.accent
                selectedTextColor: Theme.textOnAccent
                font.pixelSize: Theme.textSize
                onTextEdited: root.logs.setSearch(text)
                Keys.onEscapePressed: root.logs.setSearch("")
                Keys.onDownPressed: entries.forceActiveFocus(Qt.TabFocusReason)
                Accessible.name: placeholderText
                background: Rectangle {
                    radius: 8
                    color: Theme.control
                    border.width: 1
                    border.color: Theme.outline
                    FocusRing { shown: search.activeFocus; radius: 10 }
                }
                Symbol {
                    anchors.left: parent.left
                    anchors.leftMargin: 10
                    anchors.verticalCenter: parent.verticalCenter
                    name: "magnifyingglass"
                    size: 16
                }
                IconButton {
                    objectName: "logClearSearch"
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    visible: search.text !== ""
                    symbol: "xmark.circle.fill"
                    help: root.page.clearSearchHelp
                    onClicked: {
                        root.logs.setSearch("")
                        search.forceActiveFocus()
                    }
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            radius: Theme.radius
            color: Theme.card
            border.width: 1
            border.color: entries.activeFocus ? Theme.accentText : Theme.hairline

            LogList {
                id: entries
                objectName: "logEntries"
                anchors.fill: parent
                anchors.margins: 1
                anchors.topMargin: Theme.inset
                anchors.bottomMargin: Theme.inset
                visible: !root.page.empty.visible
                logs: root.logs
                spokenName: root.page.title
            }
            EmptyListView {
                objectName: "logEmpty"
                anchors.centerIn: parent
                width: Math.min(parent.width - 2 * Theme.margin, 420)
                visible: root.page.empty.visible
                empty: root.page.empty
                onCheck: root.logs.refresh()
                onShowAll: {
                    root.logs.setLevel("all")
                    root.logs.setSearch("")
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(112, whole.implicitHeight + 2 * Theme.grid)
            visible: entries.visible && !!entries.chosen
            radius: Theme.radius
            color: Theme.card
            border.width: 1
            border.color: Theme.hairline
            ScrollView {
                anchors.fill: parent
                anchors.rightMargin: copy.width + Theme.grid
                clip: true
                TextArea {
                    id: whole
                    objectName: "logWhole"
                    readOnly: true
                    selectByMouse: true
                    wrapMode: TextEdit.Wrap
                    textFormat: TextEdit.PlainText
                    text: entries.chosen ? entries.chosen.message : ""
                    color: Theme.primary
                    selectionColor: Theme.accent
                    selectedTextColor: Theme.textOnAccent
                    font.pixelSize: Theme.textSize
                    background: null
                    Accessible.name: text
                }
            }
            ActionButton {
                id: copy
                objectName: "logCopy"
                anchors.right: parent.right
                anchors.top: parent.top
                anchors.margins: Theme.inset
                implicitHeight: 28
                button: root.page.copy
                onClicked: root.logs.copy(entries.current)
            }
        }

        Text {
            objectName: "logCount"
            text: root.page.countText
            color: Theme.secondary
            font.pixelSize: Theme.captionSize
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
