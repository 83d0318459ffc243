// The settings: tabs on top, a form that scrolls, Save always in view.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

ApplicationWindow {
    id: window

    required property var bridge
    readonly property QtObject theme: Theme
    readonly property var page: bridge.page

    width: Math.min(Theme.scaled(720), Screen.desktopAvailableWidth)
    height: Math.min(Theme.scaled(640), Screen.desktopAvailableHeight)
    minimumWidth: Math.min(Theme.scaled(520), Screen.desktopAvailableWidth)
    minimumHeight: Math.min(Theme.scaled(420), Screen.desktopAvailableHeight)
    title: page.windowTitle
    color: Theme.window

    function save() { if (page.save.enabled) bridge.save() }
    function selectNext(step) {
        const tabs = page.tabs
        const at = tabs.findIndex(tab => tab.key === page.selectedTab)
        bridge.selectTab(tabs[(at + step + tabs.length) % tabs.length].key)
    }

    Shortcut {
        sequences: [StandardKey.Save]
        onActivated: window.save()
    }
    Shortcut {
        sequences: [StandardKey.Cancel, StandardKey.Close]
        onActivated: window.close()
    }
    Shortcut {
        sequences: ["Ctrl+Tab", "Ctrl+PgDown"]
        onActivated: window.selectNext(1)
    }
    Shortcut {
        sequences: ["Ctrl+Shift+Tab", "Ctrl+PgUp"]
        onActivated: window.selectNext(-1)
    }

    PromptOverlay {
        objectName: "promptOverlay"
        bridge: window.bridge.prompt
        host: "settings"
    }
    QuestionDialog {
        id: question
        question: window.page.question.title
        text: window.page.question.text
        yes: window.page.question.yes
        no: window.page.question.no
        visible: window.page.question.visible && window.visible
        onAnswered: yes => window.bridge.answer(yes)
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        // The default button's, for whatever has the keyboard and no use for it.
        Keys.onReturnPressed: window.save()
        Keys.onEnterPressed: window.save()

        SegmentBar {
            id: tabs
            objectName: "tabs"
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 2 * Theme.grid
            Layout.bottomMargin: 2 * Theme.grid
            role: Accessible.PageTab
            Accessible.role: Accessible.PageTabList
            Accessible.name: window.page.pickerTitle
            segments: window.page.tabs.map(tab => ({
                key: tab.key, text: tab.title, help: "", selected: tab.key === window.page.selectedTab
            }))
            onChosen: key => window.bridge.selectTab(key)
        }
        BannerView {
            objectName: "managedBanner"
            Layout.fillWidth: true
            Layout.leftMargin: Theme.margin
            Layout.rightMargin: Theme.margin
            Layout.bottomMargin: 2 * Theme.grid
            visible: window.page.isManaged
            symbol: "lock.shield.fill"
            role: "secondary"
            border.color: Theme.outline
            texts: [
                BannerText { text: window.page.bannerTitle; font.weight: Font.DemiBold },
                BannerText { text: window.page.bannerCaption; color: Theme.secondary }
            ]
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.hairline
        }
        SettingsForm {
            objectName: "form"
            Layout.fillWidth: true
            Layout.fillHeight: true
            actions: window.bridge
            tab: window.page.selectedTab
        }
        SettingsFooter {
            Layout.fillWidth: true
            page: window.page
            onSaved: window.bridge.save()
        }
    }

    Component.onCompleted: tabs.takeFocus()
}
