// A setting that is on or off.
import QtQuick

SwitchView {
    id: root

    required property var row

    function toggleByLabel() { row.actions.set(row.key, on ? "false" : "true") }

    on: row.value === "true"
    enabled: row.enabled
    spokenName: row.label
    spokenHelp: row.spokenHelp
    onToggled: on => row.actions.set(row.key, on ? "true" : "false")
}
