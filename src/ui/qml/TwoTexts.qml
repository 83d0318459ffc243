// Two texts, one after the other; where there is no room for both, each is cut, the second to no less than its share.
import QtQuick
import QtQuick.Layouts

Item {
    id: root

    property alias first: first
    property alias second: second
    property real share: 0.35   // of the line
    property bool toTheEdge: false   // the second stands at the line's end
    readonly property real kept: second.text === "" ? 0 : Math.min(second.implicitWidth, width * share)

    Layout.fillWidth: true
    implicitHeight: first.implicitHeight

    ElidedText {
        id: first
        width: Math.min(Math.ceil(implicitWidth) + 1, root.width - root.kept - Theme.grid)
    }
    ElidedText {
        id: second
        x: first.text === "" ? 0 : first.width + Theme.grid
        width: root.width - x
        anchors.baseline: first.baseline
        horizontalAlignment: root.toTheEdge ? Text.AlignRight : Text.AlignLeft
    }
}
