// Lines of text. Tab goes on to the next control.
import QtQuick
import QtQuick.Controls.Basic

TextArea {
    id: root

    required property var row

    implicitHeight: Math.max(Theme.scaled(72), contentHeight + topPadding + bottomPadding)
    leftPadding: 10
    rightPadding: 10
    topPadding: Theme.grid
    bottomPadding: Theme.grid
    enabled: row.enabled
    placeholderText: row.prompt
    placeholderTextColor: Theme.secondary
    color: enabled ? Theme.primary : Theme.secondary
    font.pixelSize: Theme.textSize
    selectionColor: Theme.accent
    selectedTextColor: Theme.textOnAccent
    selectByMouse: true
    hoverEnabled: true
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
    Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)

    onTextChanged: echo.edited()
    onActiveFocusChanged: if (!activeFocus) echo.settle()

    Accessible.name: row.label
    Accessible.description: row.spokenHelp
    Accessible.multiLine: true

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
