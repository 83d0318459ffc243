// A value between two buttons, and a switch in front where it may be off. The keys and a held button step on and on.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: root

    required property var row
    readonly property bool on: !row.hasOffState || row.isOn

    // The longer it is held, the wider the steps.
    function step(direction, repeats) {
        if (direction < 0 ? !row.mayDecrease : !row.mayIncrease) return
        row.actions.step(row.key, direction * (repeats < 12 ? 1 : repeats < 40 ? 5 : 30))
    }

    spacing: 1.5 * Theme.grid

    SwitchView {
        objectName: "off:" + root.row.key
        visible: root.row.hasOffState
        enabled: root.row.enabled
        on: root.row.isOn
        spokenName: root.row.label
        spokenHelp: root.row.spokenHelp
        onToggled: on => root.row.actions.switchOn(root.row.key, on)
    }
    FieldFrame {
        id: frame

        property int repeats: 0

        implicitWidth: line.implicitWidth
        implicitHeight: Theme.controlHeight
        enabled: root.row.enabled && root.on
        focused: activeFocus
        activeFocusOnTab: true

        function pressed(event, direction) {
            repeats = event.isAutoRepeat ? repeats + 1 : 0
            root.step(direction, repeats)
        }
        Keys.onUpPressed: event => pressed(event, 1)
        Keys.onRightPressed: event => pressed(event, 1)
        Keys.onDownPressed: event => pressed(event, -1)
        Keys.onLeftPressed: event => pressed(event, -1)
        Keys.onPressed: event => {
            if (event.key !== Qt.Key_PageUp && event.key !== Qt.Key_PageDown) return
            if (event.key === Qt.Key_PageUp && root.row.mayIncrease) root.row.actions.step(root.row.key, 10)
            if (event.key === Qt.Key_PageDown && root.row.mayDecrease) root.row.actions.step(root.row.key, -10)
            event.accepted = true
        }

        Accessible.role: Accessible.SpinBox
        Accessible.name: root.row.label + " " + root.row.value
        Accessible.description: root.row.spokenHelp
        Accessible.focusable: true
        Accessible.onIncreaseAction: root.step(1, 0)
        Accessible.onDecreaseAction: root.step(-1, 0)

        RowLayout {
            id: line
            anchors.fill: parent
            spacing: 0
            StepButton {
                objectName: "less:" + root.row.key
                symbol: "minus"
                enabled: frame.enabled && root.row.mayDecrease
                onStepped: repeats => root.step(-1, repeats)
                onTaken: frame.forceActiveFocus(Qt.MouseFocusReason)
            }
            Text {
                Layout.fillWidth: true
                Layout.minimumWidth: Theme.scaled(104)
                text: root.row.value
                color: frame.enabled ? Theme.primary : Theme.disabled
                font.pixelSize: Theme.textSize
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
            }
            StepButton {
                objectName: "more:" + root.row.key
                symbol: "plus"
                enabled: frame.enabled && root.row.mayIncrease
                onStepped: repeats => root.step(1, repeats)
                onTaken: frame.forceActiveFocus(Qt.MouseFocusReason)
            }
        }
    }
}
