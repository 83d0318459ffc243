// One control of the form: label on the left, control on the right, what is to be said about it below.
import QtQuick

Item {
    id: root

    required property int index
    required property string key
    required property string kind
    required property string label
    required property string value
    required property string prompt
    required property string help
    required property string problem
    required property string managed
    required property bool enabled
    required property var choices
    required property bool hasOffState
    required property bool isOn
    required property bool mayDecrease
    required property bool mayIncrease
    required property bool isRevealed
    required property string revealText
    required property string color
    required property var actions

    readonly property bool isSettingsRow: true
    // For those who hear it: all that is written below.
    readonly property string spokenHelp: [help, problem, managed].filter(text => text !== "").join("\n")
    readonly property bool bearsItsLabel: ["disclosure", "link", "note"].includes(kind)
    readonly property bool isField: ["text", "secret"].includes(kind)
    readonly property bool fillsTheRow: kind === "multiline" || bearsItsLabel
    // A button's help says what it does before it is pressed.
    readonly property bool helpIsLabel: kind === "button"

    readonly property real wanted: control.item && !fillsTheRow && !isField ? control.item.implicitWidth : 0
    readonly property bool stacked: fillsTheRow || (isField ? width < Theme.scaled(480) : wanted > form.width * 0.68)
    readonly property real controlWidth: fillsTheRow || (stacked && (isField || kind === "fact")) ? form.width
                                       : isField ? form.width * 0.56
                                       : Math.min(wanted, form.width)

    implicitHeight: Math.max(Theme.scaled(48), form.height + 2.5 * Theme.grid)

    Rectangle {
        visible: root.index > 0
        x: 2 * Theme.grid
        width: root.width - x
        height: 1
        color: Theme.hairline
    }

    Column {
        id: form
        x: 2 * Theme.grid
        width: root.width - 2 * x
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.inset

        Item {
            width: parent.width
            readonly property real above: root.stacked && label.visible ? label.height + Theme.inset : 0
            height: root.stacked ? above + control.height : Math.max(label.height, control.height)
            visible: root.kind !== "note"

            Text {
                id: label
                y: root.stacked ? 0 : (parent.height - height) / 2
                width: root.stacked ? parent.width : parent.width - control.width - 2 * Theme.grid
                visible: text !== "" && !root.bearsItsLabel
                text: root.helpIsLabel ? root.help : root.label
                color: root.helpIsLabel || !root.enabled ? Theme.secondary : Theme.primary
                font.pixelSize: root.helpIsLabel ? Theme.captionSize : Theme.textSize
                lineHeight: root.helpIsLabel ? 1.2 : 1
                wrapMode: Text.Wrap
                TapHandler {
                    enabled: root.kind === "toggle" && root.enabled
                    onTapped: control.item.toggleByLabel()
                }
            }
            Loader {
                id: control
                objectName: "control:" + root.key
                width: root.controlWidth
                x: root.stacked ? 0 : parent.width - width
                y: root.stacked ? parent.above : (parent.height - height) / 2
                Component.onCompleted: if (root.kind !== "note") setSource(root.files[root.kind], { row: root })
            }
        }
        SettingsCaption {
            width: parent.width
            text: root.helpIsLabel ? "" : root.help
        }
        // Few rows have either.
        Loader {
            width: parent.width
            active: root.problem !== ""
            visible: active
            sourceComponent: SettingsCaption {
                objectName: "problem:" + root.key
                text: root.problem
                symbol: "exclamationmark.triangle.fill"
                role: "red"
            }
        }
        Loader {
            width: parent.width
            active: root.managed !== ""
            visible: active
            sourceComponent: SettingsCaption {
                objectName: "managed:" + root.key
                text: root.managed
                symbol: "lock.fill"
            }
        }
    }

    readonly property var files: ({
        toggle: "ToggleControl.qml",
        picker: "PickerControl.qml",
        stepper: "StepperControl.qml",
        text: "TextControl.qml",
        secret: "SecretControl.qml",
        multiline: "MultilineControl.qml",
        timeOfDay: "MomentControl.qml",
        date: "MomentControl.qml",
        button: "ButtonControl.qml",
        disclosure: "DisclosureControl.qml",
        fact: "FactControl.qml",
        link: "LinkControl.qml"
    })
}
