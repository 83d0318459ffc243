// The dashboard's page: head, banners, cards, time stamps, filter, list, footer.
import QtQuick
import QtQuick.Layouts

Item {
    id: root

    required property var page     // the page's values by name
    required property var rows     // the list model
    required property var actions

    readonly property bool narrow: width < 640
    readonly property int margin: narrow ? 2 * Theme.grid : Theme.margin

    function focusFilter() { filters.takeFocus() }

    ColumnLayout {
        objectName: "statusParts"
        anchors.fill: parent
        anchors.margins: root.margin
        anchors.bottomMargin: 1.5 * Theme.grid
        spacing: root.narrow ? 1.5 * Theme.grid : 2 * Theme.grid

        // Beside the buttons while the title has room there, else above them.
        // Told from widths that stand before anything is laid out.
        GridLayout {
            readonly property real wanted: title.implicitWidth + discover.implicitWidth + check.implicitWidth
                                           + updateAll.implicitWidth + 3 * Theme.grid
            Layout.fillWidth: true
            columns: root.width - 2 * root.margin >= wanted ? 2 : 1
            columnSpacing: Theme.grid
            rowSpacing: Theme.grid
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 2
                ElidedText {
                    id: title
                    Layout.fillWidth: true
                    text: root.page.title
                    font.pixelSize: Theme.titleSize
                    font.weight: Font.DemiBold
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                ElidedText {
                    Layout.fillWidth: true
                    visible: !root.narrow
                    text: root.page.subtitle
                    color: Theme.secondary
                    wrapMode: Text.Wrap
                    maximumLineCount: 2
                }
            }
            RowLayout {
                spacing: Theme.grid
                ActionButton {
                    id: discover
                    objectName: "discover"
                    button: root.page.discover
                    onClicked: root.actions.discoverInstalledApps()
                }
                ActionButton {
                    id: check
                    objectName: "check"
                    button: root.page.check
                    primary: !root.page.updateAll.enabled
                    onClicked: root.actions.checkForUpdates()
                }
                ActionButton {
                    id: updateAll
                    objectName: "updateAll"
                    button: root.page.updateAll
                    primary: true
                    onClicked: root.actions.updateAll()
                }
            }
        }

        HelperBannerView {
            objectName: "helperBanner"
            Layout.fillWidth: true
            visible: root.page.helperBanner.visible
            banner: root.page.helperBanner
            onSetUp: root.actions.setUpHelper()
            onOpenSettings: root.actions.openHelperSettings()
            onReset: root.actions.resetHelper()
        }
        SelfUpdateBannerView {
            objectName: "selfUpdateBanner"
            Layout.fillWidth: true
            visible: root.page.selfUpdateBanner.visible
            banner: root.page.selfUpdateBanner
            onUpdate: root.actions.updateItself()
            onDismiss: root.actions.dismissSelfUpdate()
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: root.narrow ? Theme.grid : 2 * Theme.grid
            Repeater {
                // By number, so that a new value changes the card in place.
                model: root.page.cards.length
                StatusCardView {
                    required property int index
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    slim: root.narrow
                    card: root.page.cards[index]
                }
            }
        }

        Flow {
            Layout.fillWidth: true
            spacing: root.narrow ? Theme.inset : Theme.grid
            Repeater {
                model: root.page.timestamps
                TimestampPillView {
                    required property var modelData
                    pill: modelData
                    slim: root.narrow
                }
            }
        }
        MessageLine {
            objectName: "nextStep"
            Layout.fillWidth: true
            line: root.page.nextStep
            lines: 2
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.grid
            Text {
                visible: !root.narrow
                text: root.page.filterLabel
                color: Theme.secondary
                font.pixelSize: Theme.textSize
            }
            FilterBar {
                id: filters
                objectName: "filters"
                segments: root.page.filters
                onChosen: key => root.actions.setFilter(key)
            }
            Item { Layout.fillWidth: true }
            ActionButton {
                objectName: "recheckAll"
                button: root.page.recheckAll
                onClicked: root.actions.recheckAll()
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: Theme.rowHeight + 2 * Theme.inset
            radius: Theme.radius
            color: Theme.card
            border.width: 1
            border.color: Theme.hairline

            AppList {
                id: list
                anchors.fill: parent
                anchors.margins: 1
                anchors.topMargin: Theme.inset
                anchors.bottomMargin: Theme.inset
                visible: !root.page.empty.visible
                model: root.rows
                actions: root.actions
                spokenName: root.page.title
            }
            EmptyListView {
                objectName: "empty"
                anchors.centerIn: parent
                width: Math.min(parent.width - 2 * Theme.margin, 420)
                visible: root.page.empty.visible
                empty: root.page.empty
                onCheck: root.actions.checkForUpdates()
                onShowAll: root.actions.setFilter("all")
            }
        }

        PageFooter {
            Layout.fillWidth: true
            visible: !root.narrow || work.text !== "" || message.text !== ""
            Layout.minimumHeight: 20
            work: root.page.workLine
            message: root.page.message
        }
    }
}
