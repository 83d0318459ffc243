// The applications. Up and down walk the rows, Return unfolds one, a question mark tells why, Tab goes on into its
// buttons.
import QtQuick
import QtQuick.Controls.Basic

ListView {
    id: root

    required property var actions
    required property string spokenName

    objectName: "apps"
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    cacheBuffer: 4 * Theme.rowHeight
    currentIndex: -1
    activeFocusOnTab: true
    keyNavigationEnabled: true
    highlightMoveDuration: 0
    highlightFollowsCurrentItem: true
    onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0
    Keys.onReturnPressed: if (currentItem) currentItem.historyToggled(currentItem.key)
    Keys.onSpacePressed: if (currentItem) currentItem.historyToggled(currentItem.key)

    Keys.onPressed: event => {
        if (event.text !== "?" || !currentItem) return;
        currentItem.whyToggled(currentItem.key);
        event.accepted = true;
    }

    Accessible.role: Accessible.List
    Accessible.name: spokenName

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

    delegate: AppRow {
        width: root.width
        current: ListView.isCurrentItem
        onUpdateRequested: key => root.actions.updateApp(key)
        onRecheckRequested: key => root.actions.recheck(key)
        onHistoryToggled: key => root.actions.toggleHistory(key)
        onWhyToggled: key => root.actions.toggleWhy(key)
        onCopyRequested: text => root.actions.copyText(text)
    }
}
