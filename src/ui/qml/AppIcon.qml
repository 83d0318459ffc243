// An application's own icon, or the first letter of its name where it has none.
import QtQuick
import QtQuick.Layouts

Item {
    id: root

    required property string bundle
    required property string monogram

    Layout.preferredWidth: Theme.iconSize
    Layout.preferredHeight: Theme.iconSize

    Rectangle {
        anchors.fill: parent
        objectName: "monogram"
        visible: !icon.found
        radius: 8
        color: Theme.monogram
        Text {
            anchors.centerIn: parent
            text: root.monogram
            color: Theme.secondary
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
        }
    }
    Image {
        id: icon
        objectName: "icon"
        readonly property bool found: status === Image.Ready && implicitWidth > 1
        anchors.fill: parent
        visible: found
        source: root.bundle === "" ? "" : "image://application/" + encodeURIComponent(root.bundle)
        sourceSize: Qt.size(width * Screen.devicePixelRatio, height * Screen.devicePixelRatio)
        asynchronous: true
    }
}
