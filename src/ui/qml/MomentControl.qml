// A time of day or a date with one, as "HH:mm" and "yyyy-MM-dd HH:mm". Up and Down turn the number at the cursor.
import QtQuick

SettingsField {
    id: root

    readonly property bool hasDate: row.kind === "date"

    implicitWidth: Theme.scaled(hasDate ? 176 : 88)
    maximumLength: hasDate ? 16 : 5
    horizontalAlignment: TextInput.AlignHCenter

    function turn(step) {
        const numbers = text.match(/\d+/g)
        if (!numbers || numbers.length !== (hasDate ? 5 : 2)) return
        const parts = numbers.map(number => parseInt(number))
        const [hour, minute] = parts.slice(-2)
        const [year, month, day] = hasDate ? parts : [2000, 1, 1]
        const lowest = hasDate ? [1970, 1, 1, 0, 0] : [0, 0]
        const highest = hasDate ? [9999, 12, new Date(year, month, 0).getDate(), 23, 59] : [23, 59]
        // The number that the cursor is in or behind.
        const at = Math.min(text.slice(0, cursorPosition).replace(/\d/g, "").length, parts.length - 1)
        const span = highest[at] - lowest[at] + 1
        parts[at] = lowest[at] + (parts[at] - lowest[at] + step + span) % span
        const two = number => String(number).padStart(2, "0")
        const time = parts.slice(-2).map(two).join(":")
        const where = cursorPosition
        text = hasDate ? parts[0] + "-" + two(parts[1]) + "-" + two(parts[2]) + " " + time : time
        cursorPosition = Math.min(where, text.length)
        textEdited()
    }
    Keys.onUpPressed: turn(1)
    Keys.onDownPressed: turn(-1)
}
