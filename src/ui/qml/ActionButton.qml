// A push button: filled when it is the one thing to do, plain otherwise.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Button {
    id: root

    property bool primary: false
    property string help: ""

    implicitHeight: 32
    leftPadding: 14
    rightPadding: 14
    font.pixelSize: Theme.textSize
    font.weight: primary ? Font.DemiBold : Font.Medium
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.name: text
    Accessible.description: help
    Accessible.onPressAction: if (enabled) clicked()

    contentItem: Text {
        text: root.text
        font: root.font
        color: root.primary ? Theme.onAccent : Theme.primary
        opacity: root.enabled ? 1 : 0.45
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        radius: 7
        color: root.primary ? Theme.accent : (root.hovered && root.enabled ? Theme.hover : Theme.control)
        opacity: root.primary && !root.enabled ? 0.45 : (root.down ? 0.8 : 1)
        border.width: root.visualFocus ? 2 : (root.primary ? 0 : 1)
        border.color: root.visualFocus ? Theme.accentText : Theme.hairline
    }

    ToolTip.text: help
    ToolTip.visible: help !== "" && hovered
    ToolTip.delay: 600
}
