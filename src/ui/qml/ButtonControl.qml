// Something to do at once.
import QtQuick

ActionButton {
    required property var row

    button: ({ text: row.label, help: "", visible: true, enabled: row.enabled })
    Accessible.description: row.spokenHelp
    onClicked: row.actions.press(row.key)
}
