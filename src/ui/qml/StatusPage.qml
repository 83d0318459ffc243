// The dashboard's page: head, cards, time stamps, filter, list.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Item {
    id: root

    required property var page     // the page's values by name
    required property var rows     // the list model
    required property var actions

    function focusFilter() { filters.takeFocus() }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.margin
        spacing: 2 * Theme.grid

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.grid
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 2
                Text {
                    Layout.fillWidth: true
                    text: root.page.title
                    color: Theme.primary
                    font.pixelSize: Theme.titleSize
                    font.weight: Font.DemiBold
                    elide: Text.ElideRight
                }
                Text {
                    Layout.fillWidth: true
                    text: root.page.subtitle
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    elide: Text.ElideRight
                }
            }
            ActionButton {
                visible: root.page.discover.visible
                enabled: root.page.discover.enabled
                text: root.page.discover.text
                help: root.page.discover.help
                onClicked: root.actions.discoverInstalledApps()
            }
            ActionButton {
                visible: root.page.check.visible
                enabled: root.page.check.enabled
                text: root.page.check.text
                help: root.page.check.help
                primary: !updateAll.visible || !updateAll.enabled
                onClicked: root.actions.checkForUpdates()
            }
            ActionButton {
                id: updateAll
                visible: root.page.updateAll.visible
                enabled: root.page.updateAll.enabled
                text: root.page.updateAll.text
                help: root.page.updateAll.help
                primary: true
                onClicked: root.actions.updateAll()
            }
        }

        HelperBannerView {
            Layout.fillWidth: true
            visible: root.page.helperBanner.visible
            banner: root.page.helperBanner
            onSetUp: root.actions.setUpHelper()
            onOpenSettings: root.actions.openHelperSettings()
            onReset: root.actions.resetHelper()
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 2 * Theme.grid
            Repeater {
                model: root.page.cards
                StatusCardView {
                    required property var modelData
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    card: modelData
                }
            }
        }

        Flow {
            Layout.fillWidth: true
            spacing: 2 * Theme.grid
            Repeater {
                model: root.page.timestamps
                TimestampPillView {
                    required property var modelData
                    pill: modelData
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.grid
            Text {
                text: root.page.filterLabel
                color: Theme.secondary
                font.pixelSize: Theme.textSize
            }
            FilterBar {
                id: filters
                segments: root.page.filters
                onChosen: key => root.actions.setFilter(key)
            }
            Item { Layout.fillWidth: true }
            ActionButton {
                visible: root.page.recheckAll.visible
                enabled: root.page.recheckAll.enabled
                text: root.page.recheckAll.text
                help: root.page.recheckAll.help
                onClicked: root.actions.recheckAll()
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            radius: Theme.radius
            color: Theme.card
            border.width: 1
            border.color: Theme.hairline
            clip: true

            ListView {
                id: list
                anchors.fill: parent
                anchors.margins: 1
                visible: !root.page.empty.visible
                model: root.rows
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                reuseItems: true
                cacheBuffer: 4 * Theme.rowHeight
                Accessible.role: Accessible.List
                Accessible.name: root.page.title
                ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

                delegate: AppRow {
                    width: list.width
                    onUpdateRequested: key => root.actions.updateApp(key)
                    onRecheckRequested: key => root.actions.recheck(key)
                    onHistoryToggled: key => root.actions.toggleHistory(key)
                }
            }

            ColumnLayout {
                anchors.centerIn: parent
                width: Math.min(parent.width - 4 * Theme.margin, 420)
                visible: root.page.empty.visible
                spacing: Theme.grid
                Symbol {
                    Layout.alignment: Qt.AlignHCenter
                    name: root.page.empty.symbol
                    size: 40
                }
                Text {
                    Layout.fillWidth: true
                    text: root.page.empty.title
                    color: Theme.primary
                    font.pixelSize: Theme.headingSize
                    font.weight: Font.DemiBold
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                }
                Text {
                    Layout.fillWidth: true
                    text: root.page.empty.text
                    color: Theme.secondary
                    font.pixelSize: Theme.textSize
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                }
                ActionButton {
                    Layout.alignment: Qt.AlignHCenter
                    Layout.topMargin: Theme.grid
                    visible: root.page.empty.check.visible
                    enabled: root.page.empty.check.enabled
                    text: root.page.empty.check.text
                    onClicked: root.actions.checkForUpdates()
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            visible: statusText.text !== ""
            spacing: Theme.grid
            Symbol {
                visible: root.page.errorMessage !== ""
                name: "exclamationmark.triangle.fill"
                role: "orange"
                size: 16
            }
            Text {
                id: statusText
                Layout.fillWidth: true
                text: root.page.errorMessage !== "" ? root.page.errorMessage
                      : root.page.statusMessage !== "" ? root.page.statusMessage : root.page.workLine
                color: root.page.errorMessage !== "" ? Theme.orange : Theme.secondary
                font.pixelSize: Theme.textSize
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}
