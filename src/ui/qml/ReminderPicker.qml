// How long to put the updates off, as a menu of the lengths on offer.
import QtQuick
import QtQuick.Controls.Basic

ComboBox {
    id: root

    required property var options
    required property int selected
    required property string name
    signal chosen(int minutes)

    model: options
    textRole: "text"
    currentIndex: selected
    onActivated: index => chosen(options[index].minutes)
    implicitHeight: 32
    font.pixelSize: Theme.textSize
    hoverEnabled: true
    Accessible.name: name

    contentItem: Text {
        leftPadding: 12
        text: root.displayText
        font: root.font
        color: Theme.primary
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    indicator: Symbol {
        x: root.width - width - 10
        anchors.verticalCenter: parent.verticalCenter
        name: "chevron.down"
    }
    background: Rectangle {
        radius: 7
        color: root.hovered || root.down ? Theme.hover : Theme.control
        border.width: 1
        border.color: Theme.outline
        FocusRing { shown: root.visualFocus; radius: parent.radius + 3 }
    }
    delegate: ItemDelegate {
        id: item
        required property var modelData
        required property int index
        width: root.width
        height: 32
        highlighted: root.highlightedIndex === index
        contentItem: Text {
            text: item.modelData.text
            font: root.font
            color: Theme.primary
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
        }
        background: Rectangle {
            radius: 5
            color: item.highlighted ? Theme.selected : "transparent"
        }
    }
    popup: Popup {
        y: root.height + 2
        width: root.width
        padding: Theme.inset
        implicitHeight: Math.min(contentItem.implicitHeight + 2 * padding, 232)
        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: root.popup.visible ? root.delegateModel : null
            currentIndex: root.highlightedIndex
        }
        background: Rectangle {
            radius: 8
            color: Theme.card
            border.width: 1
            border.color: Theme.outline
        }
    }
}
