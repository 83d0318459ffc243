// A newer version of this program is there.
import QtQuick

BannerView {
    id: root

    required property var banner
    signal update()
    signal dismiss()

    symbol: banner.symbol
    role: "accent"

    texts: [
        BannerText { text: root.banner.title; font.weight: Font.DemiBold },
        BannerText { text: root.banner.text; color: Theme.secondary }
    ]

    ActionButton {
        objectName: "dismissSelfUpdate"
        button: root.banner.dismiss
        onClicked: root.dismiss()
    }
    ActionButton {
        objectName: "updateItself"
        button: root.banner.update
        primary: true
        onClicked: root.update()
    }
}
