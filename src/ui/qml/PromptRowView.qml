// One application of the prompt: what it is, from which version to which, and what an install will do to it.
import QtQuick
import QtQuick.Layouts

Item {
    id: root

    required property int index
    required property string name
    required property string monogram
    required property string iconBundle
    required property string versions
    required property string behavior
    required property string spokenText
    property bool isLast: false

    height: Theme.rowHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: spokenText

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: 1.5 * Theme.grid
        anchors.rightMargin: 2 * Theme.grid
        spacing: 1.5 * Theme.grid

        AppIcon {
            bundle: root.iconBundle
            monogram: root.monogram
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 3
            TwoTexts {
                toTheEdge: true
                first.text: root.name
                first.font.weight: Font.Medium
                second.text: root.versions
                second.color: Theme.secondary
                second.font.pixelSize: Theme.captionSize
            }
            ElidedText {
                Layout.fillWidth: true
                text: root.behavior
                color: Theme.secondary
                font.pixelSize: Theme.captionSize
            }
        }
    }
    Rectangle {
        visible: !root.isLast
        anchors.bottom: parent.bottom
        x: 1.5 * Theme.grid + Theme.iconSize + 1.5 * Theme.grid
        width: parent.width - x
        height: 1
        color: Theme.hairline
    }
}
