// A few choices in one control, one of them chosen. Left and right choose, as in any group of radio buttons.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Rectangle {
    id: root

    required property var segments   // with key, text, help, selected
    property int role: Accessible.RadioButton
    readonly property int chosenIndex: segments.findIndex(segment => segment.selected)
    signal chosen(string key)

    function takeFocus() { buttons.itemAt(Math.max(chosenIndex, 0))?.forceActiveFocus(Qt.ShortcutFocusReason) }
    function choose(index) {
        if (index < 0 || index >= segments.length) return
        chosen(segments[index].key)
        buttons.itemAt(index).forceActiveFocus(Qt.TabFocusReason)
    }

    implicitWidth: row.implicitWidth + 6
    implicitHeight: Theme.controlHeight
    radius: 8
    color: Theme.sidebar
    border.width: 1
    border.color: Theme.hairline

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 3
        spacing: 2

        Repeater {
            id: buttons
            // By number, so that a choice changes the buttons in place and keeps the focus.
            model: root.segments.length
            AbstractButton {
                id: segment

                required property int index
                readonly property var value: root.segments[index]

                Layout.fillHeight: true
                implicitWidth: label.implicitWidth + 24
                focusPolicy: checked ? Qt.StrongFocus : Qt.ClickFocus
                hoverEnabled: true
                checked: value.selected
                text: value.text
                onClicked: root.chosen(value.key)
                Keys.onLeftPressed: root.choose(index - 1)
                Keys.onRightPressed: root.choose(index + 1)

                Accessible.role: root.role
                Accessible.name: text
                Accessible.description: value.help
                Accessible.checkable: true
                Accessible.checked: value.selected
                Accessible.onPressAction: clicked()

                contentItem: Text {
                    id: label
                    text: segment.text
                    color: segment.checked ? Theme.primary : Theme.secondary
                    font.pixelSize: Theme.textSize
                    font.weight: Font.Medium
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: Rectangle {
                    radius: 6
                    color: segment.checked ? Theme.card : segment.hovered ? Theme.hover : "transparent"
                    border.width: segment.checked ? 1 : 0
                    border.color: Theme.outline
                    FocusRing { shown: segment.visualFocus; radius: 8; anchors.margins: -2 }
                }
                Hint {
                    text: segment.value.help
                    wanted: segment.hovered
                }
            }
        }
    }
}
