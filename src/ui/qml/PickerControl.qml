// One of a few choices; a value that is none of them stands as it is.
import QtQuick

ChoicePicker {
    required property var row

    enabled: row.enabled
    implicitWidth: Theme.scaled(220)
    options: row.choices
    selected: row.choices.findIndex(choice => choice.value === row.value)
    otherText: row.value
    name: row.label
    Accessible.description: row.spokenHelp
    onChosen: index => row.actions.set(row.key, row.choices[index].value)
}
