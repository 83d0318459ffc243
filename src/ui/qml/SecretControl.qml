// A line that is hidden until it is revealed, where it may be.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property var row

    spacing: Theme.grid

    SettingsField {
        Layout.fillWidth: true
        row: root.row
        hidden: !root.row.isRevealed
        inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText
    }
    ActionButton {
        objectName: "reveal:" + root.row.key
        button: ({ text: root.row.revealText, help: "", visible: root.row.revealText !== "", enabled: true })
        Accessible.name: root.row.revealText + ", " + root.row.label
        onClicked: root.row.actions.reveal(root.row.key, !root.row.isRevealed)
    }
}
