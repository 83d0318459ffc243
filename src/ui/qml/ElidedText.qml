// A line of text that is cut when there is no room, and then tells the whole under the pointer.
import QtQuick

Text {
    id: root

    color: Theme.primary
    font.pixelSize: Theme.textSize
    elide: Text.ElideRight

    HoverHandler { id: hover; enabled: root.truncated }
    Hint {
        text: root.text
        wanted: hover.hovered && root.truncated
    }
}
