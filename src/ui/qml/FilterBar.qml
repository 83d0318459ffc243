// The four filters as one segmented control.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Rectangle {
    id: root

    required property var segments
    signal chosen(string key)

    function takeFocus() { buttons.itemAt(0)?.forceActiveFocus(Qt.ShortcutFocusReason) }

    implicitWidth: row.implicitWidth + 6
    implicitHeight: 32
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
            model: root.segments
            AbstractButton {
                id: segment

                required property var modelData

                Layout.fillHeight: true
                implicitWidth: label.implicitWidth + 24
                focusPolicy: Qt.StrongFocus
                hoverEnabled: true
                checked: modelData.selected
                onClicked: root.chosen(modelData.key)

                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.text
                Accessible.description: modelData.help
                Accessible.checked: checked
                Accessible.onPressAction: clicked()

                contentItem: Text {
                    id: label
                    text: segment.modelData.text
                    color: segment.checked ? Theme.primary : Theme.secondary
                    font.pixelSize: Theme.textSize
                    font.weight: segment.checked ? Font.DemiBold : Font.Normal
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: Rectangle {
                    radius: 6
                    color: segment.checked ? Theme.card : (segment.hovered ? Theme.hover : "transparent")
                    border.width: segment.visualFocus ? 2 : (segment.checked ? 1 : 0)
                    border.color: segment.visualFocus ? Theme.accentText : Theme.hairline
                }
                ToolTip.text: modelData.help
                ToolTip.visible: hovered
                ToolTip.delay: 600
            }
        }
    }
}
