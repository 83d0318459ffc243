// A round button that bears a symbol alone; its name and help are told to the accessibility tree.
import QtQuick
import QtQuick.Controls.Basic

Button {
    id: root

    property string symbol
    property string role: "secondary"
    property string help: ""

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    padding: 4
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.name: text !== "" ? text : help
    Accessible.description: help
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: if (enabled) clicked()
    Keys.onEnterPressed: if (enabled) clicked()

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            role: root.role
            size: 20
            opacity: root.enabled ? 1 : 0.4
        }
    }
    background: Rectangle {
        radius: width / 2
        color: root.enabled && (root.hovered || root.down) ? Theme.pressed : "transparent"
        FocusRing { shown: root.visualFocus; radius: width / 2; anchors.margins: 0 }
    }

    Hint {
        text: root.help
        wanted: root.hovered
    }
}
