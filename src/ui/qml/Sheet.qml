// A sheet over its window, which it dims. What is on it is made when it is first shown.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T

Popup {
    id: root

    required property Component body
    property color color: Theme.card
    property bool wasShown: false
    onAboutToShow: wasShown = true

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    padding: Theme.margin
    modal: true
    focus: true
    closePolicy: Popup.NoAutoClose

    T.Overlay.modal: Rectangle { color: "#66000000" }
    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; to: 0; duration: Theme.motion }
    }
    background: Rectangle {
        radius: Theme.radius
        color: root.color
        border.width: 1
        border.color: Theme.outline
    }
    contentItem: Loader {
        focus: true
        active: root.wasShown
        sourceComponent: root.body
    }
}
