// A menu of choices below its field.
import QtQuick
import QtQuick.Controls.Basic

ComboBox {
    id: root

    required property var options   // with text
    required property int selected  // -1 for none of them
    required property string name
    property string otherText       // stands while none is chosen
    signal chosen(int index)

    model: options
    textRole: "text"
    currentIndex: selected
    displayText: selected < 0 ? otherText : currentText
    // What is shown is what the page says, also where it took no notice of the choice.
    onActivated: index => {
        chosen(index)
        currentIndex = Qt.binding(() => root.selected)
    }
    implicitHeight: Theme.controlHeight
    wheelEnabled: false
    font.pixelSize: Theme.textSize
    hoverEnabled: true
    Accessible.name: name

    contentItem: Text {
        leftPadding: 12
        text: root.displayText
        font: root.font
        color: root.enabled ? Theme.primary : Theme.disabled
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    indicator: Symbol {
        x: root.width - width - 10
        anchors.verticalCenter: parent.verticalCenter
        name: "chevron.down"
        opacity: root.enabled ? 1 : 0.5
    }
    background: FieldFrame {
        enabled: root.enabled
        hovered: root.hovered || root.down
        focused: root.visualFocus
    }
    delegate: ItemDelegate {
        id: item
        required property var modelData
        required property int index
        width: root.width
        height: Theme.controlHeight
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
        implicitHeight: Math.min(contentItem.implicitHeight + 2 * padding, Theme.scaled(232))
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
