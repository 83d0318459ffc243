// One of a stepper's two buttons. Its steps are the stepper's own actions to those who do not see it.
import QtQuick
import QtQuick.Controls.Basic

AbstractButton {
    id: root

    required property string symbol
    property int repeats: 0
    signal stepped(int repeats)
    signal taken()

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    autoRepeat: true
    autoRepeatDelay: 400
    autoRepeatInterval: 80
    onDownChanged: {
        repeats = 0
        if (down) taken()
    }
    onClicked: stepped(repeats++)
    Accessible.ignored: true

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            role: root.enabled ? "primary" : "secondary"
            opacity: root.enabled ? 1 : 0.5
        }
    }
    background: Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        radius: 6
        color: root.down ? Theme.pressed : root.enabled && root.hovered ? Theme.hover : "transparent"
    }
}
