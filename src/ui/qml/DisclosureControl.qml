// Unfolds the controls below it.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

AbstractButton {
    id: root

    required property var row
    readonly property bool open: row.value === "true"

    implicitHeight: Theme.controlHeight
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    enabled: row.enabled
    onClicked: row.actions.set(row.key, open ? "false" : "true")
    Keys.onRightPressed: if (!open) clicked()
    Keys.onLeftPressed: if (open) clicked()

    Accessible.role: Accessible.CheckBox
    Accessible.name: row.label
    Accessible.description: row.spokenHelp
    Accessible.checkable: true
    Accessible.checked: open
    Accessible.onPressAction: if (enabled) clicked()
    Accessible.onToggleAction: if (enabled) clicked()

    contentItem: RowLayout {
        spacing: Theme.grid
        Symbol {
            name: "chevron.down"
            rotation: root.open ? 0 : -90
            Behavior on rotation {
                enabled: !Theme.reducedMotion
                NumberAnimation { duration: Theme.motion }
            }
        }
        Text {
            Layout.fillWidth: true
            text: root.row.label
            color: Theme.primary
            font.pixelSize: Theme.textSize
            font.weight: Font.Medium
            wrapMode: Text.Wrap
        }
    }
    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: -Theme.grid
        anchors.rightMargin: -Theme.grid
        radius: 7
        color: root.hovered ? Theme.hover : "transparent"
        FocusRing { shown: root.visualFocus; radius: 7; anchors.margins: 0 }
    }
}
