// The sections of a tab, one below the other. What has the keyboard is always in view.
import QtQuick
import QtQuick.Controls.Basic

Flickable {
    id: root

    required property var actions
    required property string tab

    readonly property int side: Math.max(Theme.margin, (width - Theme.scaled(720)) / 2)

    clip: true
    contentHeight: sections.height + 2 * Theme.margin
    boundsBehavior: Flickable.StopAtBounds
    onTabChanged: contentY = 0

    function bringIntoView(item) {
        let within = item
        while (within && within !== contentItem) within = within.parent
        if (!within) return
        // With its row's help, where that fits.
        let row = item
        while (row !== contentItem && row.isSettingsRow !== true) row = row.parent
        const shown = row !== contentItem && row.height < height - 2 * Theme.grid ? row : item
        const top = shown.mapToItem(contentItem, 0, 0).y - Theme.grid
        const bottom = top + shown.height + 2 * Theme.grid
        if (top < contentY) contentY = Math.max(0, top)
        else if (bottom > contentY + height) contentY = Math.min(bottom, contentHeight) - height
    }
    readonly property Item focused: Window.activeFocusItem
    onFocusedChanged: if (focused) bringIntoView(focused)

    ScrollBar.vertical: ScrollBar {
        id: bar
        policy: ScrollBar.AsNeeded
        contentItem: Rectangle {
            implicitWidth: 6
            radius: 3
            visible: bar.size < 1
            color: Theme.outline
        }
    }

    Column {
        id: sections
        x: root.side
        y: Theme.margin
        width: root.width - 2 * root.side
        spacing: Theme.margin

        Repeater {
            model: root.actions.sections
            SettingsSectionView {
                width: sections.width
                actions: root.actions
            }
        }
    }
}
