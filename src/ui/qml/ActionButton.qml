// A push button of the page: filled when it is the one thing to do, plain otherwise.
import QtQuick
import QtQuick.Controls.Basic

Button {
    id: root

    required property var button   // the page's value
    property bool primary: false

    visible: button.visible
    enabled: button.enabled
    text: button.text

    implicitHeight: Theme.controlHeight
    leftPadding: 14
    rightPadding: 14
    font.pixelSize: Theme.textSize
    font.weight: Font.Medium
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.name: text
    Accessible.description: button.help
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: if (enabled) clicked()
    Keys.onEnterPressed: if (enabled) clicked()

    contentItem: Text {
        text: root.text
        font: root.font
        color: !root.enabled ? Theme.disabled : root.primary ? Theme.textOnAccent : Theme.primary
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        readonly property bool filled: root.primary && root.enabled

        radius: 7
        color: filled ? (root.hovered || root.down ? Theme.accentHover : Theme.accent)
             : root.enabled && (root.hovered || root.down) ? Theme.hover : Theme.control
        border.width: filled ? 0 : 1
        border.color: Theme.outline
        Behavior on color {
            enabled: !Theme.reducedMotion
            ColorAnimation { duration: Theme.motion }
        }
        FocusRing { shown: root.visualFocus; radius: parent.radius + 3 }
    }

    Hint {
        text: root.button.help
        wanted: root.hovered
    }
}
