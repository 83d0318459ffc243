// A switch that shows what the page says and asks for the other.
import QtQuick
import QtQuick.Controls.Basic

AbstractButton {
    id: root

    required property bool on
    property string spokenName
    property string spokenHelp
    signal toggled(bool on)

    implicitWidth: track.implicitWidth
    implicitHeight: track.implicitHeight
    focusPolicy: Qt.StrongFocus
    onClicked: toggled(!on)

    Accessible.role: Accessible.CheckBox
    Accessible.name: spokenName
    Accessible.description: spokenHelp
    Accessible.checkable: true
    Accessible.checked: on
    Accessible.onPressAction: if (enabled) clicked()
    Accessible.onToggleAction: if (enabled) clicked()

    contentItem: null
    background: Rectangle {
        id: track
        implicitWidth: Theme.scaled(38)
        implicitHeight: Theme.scaled(22)
        radius: height / 2
        color: root.on ? Theme.accent : Theme.track
        opacity: root.enabled ? 1 : 0.55
        Behavior on color {
            enabled: !Theme.reducedMotion
            ColorAnimation { duration: Theme.motion }
        }
        Rectangle {
            readonly property int gap: 2
            property real place: root.on ? 1 : 0
            y: gap
            x: gap + place * (parent.width - width - 2 * gap)
            width: height
            height: parent.height - 2 * gap
            radius: height / 2
            color: Theme.knob
            Behavior on place {
                enabled: !Theme.reducedMotion
                NumberAnimation { duration: Theme.motion }
            }
        }
        FocusRing { shown: root.visualFocus; radius: height / 2 }
    }
}
