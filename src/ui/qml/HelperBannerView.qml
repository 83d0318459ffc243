// What is missing before applications can be patched, and the way out.
import QtQuick
import QtQuick.Layouts

BannerView {
    id: root

    required property var banner
    signal setUp()
    signal openSettings()
    signal reset()

    symbol: "exclamationmark.shield"
    role: "orange"

    texts: [
        BannerText { text: root.banner.helperLine },
        BannerText { text: root.banner.installomatorLine }
    ]

    ActionButton {
        objectName: "setUpHelper"
        button: root.banner.setUp
        primary: true
        onClicked: root.setUp()
    }
    ActionButton {
        objectName: "openHelperSettings"
        button: root.banner.openSettings
        primary: true
        onClicked: root.openSettings()
    }
    ActionButton {
        objectName: "resetHelper"
        button: root.banner.reset
        onClicked: confirmation.open()
    }

    ResetConfirmation {
        id: confirmation
        banner: root.banner
        onConfirmed: root.reset()
    }
}
