// One line of a banner; no line when it is empty.
import QtQuick
import QtQuick.Layouts

Text {
    Layout.fillWidth: true
    visible: text !== ""
    color: Theme.primary
    font.pixelSize: Theme.textSize
    wrapMode: Text.Wrap
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
}
