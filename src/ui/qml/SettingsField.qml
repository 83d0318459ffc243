// A line that is typed into. It keeps what its user types, and shows what the page says whenever that is another thing.
import QtQuick
import QtQuick.Controls.Basic

TextField {
    id: root

    required property var row
    property bool hidden: false   // its letters

    implicitHeight: Theme.controlHeight
    leftPadding: 10
    rightPadding: 10
    verticalAlignment: TextInput.AlignVCenter
    enabled: row.enabled
    placeholderText: row.prompt
    placeholderTextColor: Theme.secondary
    color: enabled ? Theme.primary : Theme.secondary
    font.pixelSize: Theme.textSize
    selectionColor: Theme.accent
    selectedTextColor: Theme.textOnAccent
    selectByMouse: true
    hoverEnabled: true
    echoMode: hidden ? TextInput.Password : TextInput.Normal

    onTextEdited: echo.edited()
    onActiveFocusChanged: if (!activeFocus) echo.settle()

    Accessible.name: row.label
    // The toolkit tells no name of a field whose letters are hidden.
    Accessible.description: hidden ? [row.label, row.spokenHelp].filter(text => text !== "").join("\n") : row.spokenHelp
    Accessible.passwordEdit: hidden

    EditedText {
        id: echo
        field: root
        row: root.row
    }
    background: FieldFrame {
        enabled: root.enabled
        hovered: root.hovered && !root.activeFocus
        focused: root.activeFocus
        faulty: root.row.problem !== ""
    }
}
