// One of our own drawings by its design name, in a colour role. The image provider keeps each drawing.
import QtQuick

Item {
    id: root

    property string name
    property string role: "secondary"
    property color color: Theme.role(role)
    property int size: 16   // beside text of the usual size
    readonly property int side: Theme.scaled(size)

    implicitWidth: side
    implicitHeight: side

    Image {
        anchors.fill: parent
        visible: root.name !== "" && root.role !== "clear"
        source: visible ? "image://symbol/" + root.name + "/" + String(root.color).substring(1) + "/"
                          + String(Theme.card).substring(1) : ""
        sourceSize: Qt.size(root.side, root.side)
        smooth: true
    }
}
