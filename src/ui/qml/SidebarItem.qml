// A page's entry in the sidebar.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

AbstractButton {
    id: root

    required property var section
    required property bool compact

    implicitHeight: 32
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    text: section.text
    Keys.onReturnPressed: clicked()

    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.selected: checked
    Accessible.onPressAction: clicked()

    contentItem: RowLayout {
        spacing: Theme.grid
        Symbol {
            Layout.leftMargin: root.compact ? 0 : Theme.grid
            Layout.alignment: root.compact ? Qt.AlignHCenter : Qt.AlignVCenter
            name: root.section.symbol
            role: root.checked ? "accent" : "secondary"
            size: 18
        }
        Text {
            Layout.fillWidth: true
            visible: !root.compact
            text: root.text
            color: Theme.primary
            font.pixelSize: Theme.textSize
            font.weight: root.checked ? Font.Medium : Font.Normal
        }
    }
    background: Rectangle {
        radius: 7
        color: root.checked ? Theme.selected : root.hovered ? Theme.hover : "transparent"
        FocusRing { shown: root.visualFocus; radius: 9; anchors.margins: -2 }
    }
    Hint {
        text: root.text
        wanted: root.compact && root.hovered
    }
}
