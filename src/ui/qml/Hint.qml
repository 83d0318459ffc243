// Help for the thing it lies in, after the pointer has rested there. Made only when shown.
import QtQuick
import QtQuick.Controls.Basic

Item {
    id: root

    property string text
    property bool wanted: false

    anchors.fill: parent

    Timer {
        id: rested
        interval: 600
        running: root.wanted && root.text !== ""
    }
    onWantedChanged: if (!wanted) bubble.active = false
    Connections {
        target: rested
        function onTriggered() { bubble.active = true }
    }

    Loader {
        id: bubble
        anchors.fill: parent
        active: false
        sourceComponent: Item {
            ToolTip {
                visible: true
                text: root.text
                padding: Theme.grid
                contentItem: Text {
                    text: root.text
                    color: Theme.primary
                    font.pixelSize: Theme.captionSize
                    wrapMode: Text.Wrap
                    width: Math.min(implicitWidth, Theme.hintWidth)
                }
                implicitWidth: Math.min(measure.width, Theme.hintWidth) + 2 * padding + 2
                background: Rectangle {
                    radius: 6
                    color: Theme.control
                    border.width: 1
                    border.color: Theme.outline
                }
                Text {
                    id: measure
                    visible: false
                    text: root.text
                    font.pixelSize: Theme.captionSize
                }
            }
        }
    }
}
