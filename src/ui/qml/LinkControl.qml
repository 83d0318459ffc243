// Leads out of the window, to the address that its pointer help names.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

AbstractButton {
    id: root

    required property var row

    implicitHeight: Theme.scaled(24)
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    enabled: row.enabled
    onClicked: row.actions.press(row.key)

    Accessible.role: Accessible.Link
    Accessible.name: row.label
    Accessible.description: row.value
    Accessible.onPressAction: if (enabled) clicked()

    contentItem: RowLayout {
        spacing: Theme.inset
        Text {
            Layout.maximumWidth: root.width - Theme.scaled(20)
            text: root.row.label
            color: Theme.accentText
            font.pixelSize: Theme.textSize
            font.underline: root.hovered
            elide: Text.ElideRight
        }
        Symbol {
            name: "arrow.up.right"
            role: "accent"
            size: 14
        }
        Item { Layout.fillWidth: true }
    }
    background: Item {
        FocusRing { shown: root.visualFocus; radius: 5 }
    }
    Hint {
        text: root.row.value
        wanted: root.hovered
    }
}
