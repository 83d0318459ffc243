// Between a field and the page's value for it. The page's answer to an edit comes when more may have been typed:
// it is known by its text, and leaves field and cursor alone.
import QtQuick

QtObject {
    id: root

    required property var field   // with a text and a cursor
    required property var row
    readonly property string value: row.value
    property var told: []         // edits the page has not answered
    property bool taking: false

    function edited() {
        if (taking || field.text === value) return
        told.push(field.text)
        row.actions.set(row.key, field.text)
    }
    // The edit is over: what the page took no notice of goes, unless it says what is wrong with it.
    function settle() {
        told = []
        if (row.problem === "") take()
    }
    function take() {
        if (field.text === value) return
        const at = field.cursorPosition
        taking = true
        field.text = value
        field.cursorPosition = Math.min(at, field.length)
        taking = false
    }

    onValueChanged: {
        const answered = told.indexOf(value)
        if (answered < 0) {
            told = []
            take()
        } else {
            told.splice(0, answered + 1)
        }
    }
    Component.onCompleted: take()
}
